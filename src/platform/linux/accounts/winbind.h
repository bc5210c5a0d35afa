// The answers of winbind as values. They come from another process, which may have any version or be broken:
// counts, null pointers, SIDs and names are checked, and a malformed answer counts as a failed one.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/api/security.h"
#include "platform/linux/accounts/account_names.h"
#include "platform/linux/accounts/winbind_library.h"
#include "platform/nt/sid.h"

namespace permora::host {

enum class WinbindAnswer : std::uint8_t {
    kFound,
    kNotFound,  // or a domain that cannot be reached: winbind has one code for both
    kRefused,   // a logon
    kFailed,    // it does not run, ran out of something, or handed over what cannot be
};

struct WinbindDomain {
    std::string name;     // "EXAMPLE"
    std::string dnsName;  // "EXAMPLE.TEST"; empty for those without one
    nt::Sid sid;
    bool isLocal = false;  // this machine, BUILTIN
    bool isOwn = false;    // the domain that the machine belongs to
    bool isOffline = false;
};

struct WinbindName {
    std::string name;  // empty: nobody has the SID
    std::string domain;
    int type = 0;  // a value of SID_NAME_USE; winbind calls computers users

    SID_NAME_USE Use() const {
        const bool isComputer = type == SidTypeUser && name.ends_with('$');
        return isComputer ? SidTypeComputer : static_cast<SID_NAME_USE>(type);
    }
};

// A connection of one thread. Each call may block for minutes. Outputs are stored with kFound only.
class Winbind {
  public:
    Winbind(const Winbind&) = delete;
    Winbind& operator=(const Winbind&) = delete;
    ~Winbind();

    // The one of the calling thread; null when the library is missing or there is no memory. Lives as long as
    // the thread.
    static Winbind* OfThisThread();

    WinbindAnswer ListDomains(std::vector<WinbindDomain>& domains);
    // Whether the domain's controller answers now.
    WinbindAnswer Ping(const std::string& domain);

    WinbindAnswer FindName(const nt::Sid& sid, WinbindName& name);
    // One for each relative id, in their order; those that nobody has are empty, which is certain only where
    // the domain is one of ListDomains.
    WinbindAnswer FindNames(const nt::Sid& domain, std::vector<std::uint32_t> relativeIds,
                            std::vector<WinbindName>& names);
    // `domain` may be empty where the name is a principal's (anna@example.test).
    WinbindAnswer FindSid(const std::string& domain, const std::string& name, nt::Sid& sid);
    // Bare names, in small letters. Computers are in neither list.
    WinbindAnswer ListNames(AccountKind kind, const std::string& domain, std::vector<std::string>& names);

    // The user, its groups, and this machine's local groups that they are in.
    WinbindAnswer FindGroupsOfUser(const nt::Sid& user, std::vector<nt::Sid>& sids);
    // The local groups below `domain` (this machine, BUILTIN) that have one of `members`.
    WinbindAnswer FindAliases(const nt::Sid& domain, std::span<const nt::Sid> members,
                              std::vector<nt::Sid>& aliases);
    // As a logon with a ticket's authorization data gives them: the user first.
    WinbindAnswer FindGroupsOfTicket(std::span<const std::uint8_t> data, std::vector<nt::Sid>& sids);

    // The host's numbers of accounts; nothing for those that have none.
    struct HostIds {
        std::optional<uid_t> user;
        std::optional<gid_t> group;
    };
    WinbindAnswer FindHostIds(std::span<const nt::Sid> sids, std::vector<HostIds>& ids);
    WinbindAnswer FindUser(const nt::Sid& sid, uid_t& user);
    WinbindAnswer FindSidOf(AccountKind kind, id_t id, nt::Sid& sid);

  private:
    static std::unique_ptr<Winbind> Connect();
    Winbind(const WinbindLibrary& functions, WinbindContext* connection);  // owns the context

    const WinbindLibrary& library;
    WinbindContext* context;
};

}  // namespace permora::host
