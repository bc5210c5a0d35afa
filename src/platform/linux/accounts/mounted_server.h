// One server whose shares are mounted here, asked about accounts by Samba's `rpcclient`. The server is
// foreign, may be slow or away, and is waited for no longer than a domain.
//
// After a failure it is left alone for a while, since otherwise each row of a list would wait anew.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/accounts.h"
#include "platform/linux/accounts/account_source.h"
#include "platform/linux/accounts/server_logon.h"
#include "platform/linux/accounts/server_output.h"
#include "platform/linux/accounts/sid_hash.h"
#include "platform/linux/accounts/waiting_calls.h"

namespace permora::host {

// Any thread. Lives as long as the process, since questions may outlive everything else.
class MountedServer {
  public:
    // By its name in mounts (ServerOf).
    explicit MountedServer(std::string server) : name(std::move(server)) {}

    // The shares of it that are mounted now; at least one.
    void SetMounts(std::vector<MountEntry> entries);

    const std::string& Name() const { return name; }
    // Asks who it is, once: 0, ERROR_NONE_MAPPED where it cannot be asked here, or kNameNotYet.
    DWORD Identify(const Patience& patience);

    // The name of a SID of a machine or domain, as AccountSource::FindName. ERROR_NONE_MAPPED too where
    // nothing is here with which the server can be asked.
    DWORD FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account);

    // The account with a bare name or one with its domain: 0, ERROR_NONE_MAPPED, or kNameNotYet when the
    // server does not answer. Waits kLookupTime at most.
    DWORD FindSid(const NameText& text, nt::Sid& sid);

    // Whether a domain of this name is the server itself.
    bool IsCalled(std::string_view domain);

    // Whether both have told that they are one server, which is mounted by several names.
    bool IsSameAs(MountedServer& other);

    // Whether the SID is of an account of its own, as far as it has told who it is.
    bool Owns(const nt::Sid& sid);
    // Of one of the server's own accounts: the account, its groups, and what a logon over the network adds,
    // without the server's local groups. ERROR_NONE_MAPPED for whom nobody can be; kNameNotYet when the
    // server does not answer.
    DWORD FindGroups(const Patience& patience, const nt::Sid& account, std::vector<nt::Sid>& sids);
    // Adds the server's local groups that have one of `sids`. As above.
    DWORD AddLocalGroups(const Patience& patience, std::vector<nt::Sid>& sids);

  private:
    struct KnownName {
        bool isAskedFor = false;
        std::optional<AccountName> account;  // as the server has told; nothing: not yet
        SteadyClock::time_point time;

        bool IsFresh() const;
    };

    DWORD WhyNotAsked();  // 0: it may be asked; with the lock held
    void Note(DWORD error);
    DWORD Failed();  // the server, which is then left alone for a while
    DWORD Ask(const std::string& question, std::string& answer);
    DWORD AskUntil(const Patience& patience, const std::string& question, std::string& answer);
    std::optional<ServerIdentity> Identity();  // as far as it has told
    DWORD Identify(const Patience& patience, ServerIdentity& self);
    static DWORD Take(const KnownName& known, AccountName& account);
    // Adds the local groups that have one of `sids`, of the domain that rpcclient calls `where`.
    DWORD AddAliases(const Patience& patience, const char* where, const nt::Sid& domain,
                     std::vector<nt::Sid>& sids);
    void AskForNames();                                      // on a background thread
    void Keep(const nt::Sid& sid, const AccountName* told);  // with the lock held

    const std::string name;
    std::mutex mutex;
    std::condition_variable hasNames;
    std::vector<MountEntry> mounts;
    std::optional<ServerIdentity> identity;
    std::string shownName;  // of it, which no other domain has here
    DWORD failure = ERROR_SUCCESS;
    SteadyClock::time_point failureEnd;
    std::chrono::seconds pause{};  // after the last failure
    std::unordered_map<nt::Sid, KnownName, SidHash> names;
    std::vector<nt::Sid> pending;
    bool isAsking = false;
    bool isSlow = false;  // somebody has waited in vain for what is being asked
};

// How long a server is waited for by who would wait so long for a domain (WaitLongerForServers).
std::chrono::milliseconds ServerTime(std::chrono::milliseconds wait);

// Whether a SID has the form of accounts of machines and domains.
bool IsAccountOfDomain(const nt::Sid& sid);

}  // namespace permora::host
