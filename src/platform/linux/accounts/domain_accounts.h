// The accounts of the domain that this machine belongs to, and of those that it trusts: a source behind
// winbind. Names are kept, so a list of ten thousand rows costs one question for each account.
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/linux/accounts/account_source.h"
#include "platform/linux/accounts/domain_link.h"
#include "platform/linux/accounts/sid_hash.h"

namespace permora::host {

class DomainAccounts : public AccountSource {
  public:
    DWORD FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) override;
    // Bare names are those of the machine's own domain, or a principal's (anna@example.test).
    DWORD FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) override;
    DWORD FindGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) override;
    DWORD Search(const std::atomic<bool>& isStopped, FoundRows& rows) override;
    std::string Name() override;

    // Whether the SID may be one of an account of a domain.
    static bool IsOfDomain(const nt::Sid& sid);
    // The account behind a number of the host that the host itself does not keep.
    DWORD FindSidOf(AccountKind kind, id_t id, nt::Sid& sid);
    // The host's user that a domain account is; ERROR_NONE_MAPPED where it is none or no domain account.
    DWORD FindUser(const nt::Sid& sid, uid_t& user);

    // The direct members of a group of the machine's own domain: errors as FindGroupMembers
    // (platform/group_members.h).
    DWORD FindMembers(const nt::Sid& group, std::vector<nt::Sid>& members);

    DomainLink& Link() { return link; }

  private:
    struct KnownName {
        DWORD error = kNameNotYet;  // 0, ERROR_NONE_MAPPED or kNameNotYet
        AccountName account;
        SteadyClock::time_point time;
        bool isAskedFor = false;

        bool IsFresh() const;
    };
    struct KnownId {
        DWORD error = ERROR_NONE_MAPPED;
        nt::Sid sid;
        SteadyClock::time_point time;
    };

    struct KnownUser {
        uid_t user = 0;
        SteadyClock::time_point time;
    };

    // 0 where there is a domain that may be asked.
    DWORD CheckDomain(std::chrono::milliseconds wait);
    DWORD CheckAnswers(const WinbindDomain& domain);  // the same, by asking
    std::optional<WinbindDomain> DomainOf(const nt::Sid& sid);

    void AskFor(const nt::Sid& sid);  // with the lock held
    void AskForNames();               // on a background thread, as are the next
    std::vector<nt::Sid> TakePending();
    void AskForNames(const std::vector<nt::Sid>& sids);
    void AskForForeignName(const nt::Sid& sid);
    void Keep(const nt::Sid& sid, DWORD error, const AccountName& account);

    WinbindAnswer CollectGroups(Winbind& winbind, const nt::Sid& account, const WinbindDomain& domain,
                                const std::vector<std::uint8_t>& ticket, std::vector<nt::Sid>& sids);

    DomainLink link;
    std::mutex mutex;
    std::condition_variable hasNames;
    std::unordered_map<nt::Sid, KnownName, SidHash> names;
    std::vector<nt::Sid> pending;  // whose names nobody fetches yet
    int fetchers = 0;
    std::map<std::pair<AccountKind, id_t>, KnownId> ids;
    std::unordered_map<nt::Sid, KnownUser, SidHash> users;
};

// Never destroyed: calls to winbind may outlive everything else.
DomainAccounts& TheDomainAccounts();

}  // namespace permora::host
