// Accounts, where the system's own calls (LookupAccountSidA, LookupAccountNameA, NetUserEnum) fall short: a
// search that hands out rows while it runs, the groups of an account with what they rest on, names within a
// deadline, and whether the machine's domain answers.
//
// Accounts come from the system itself (well-known and built-in ones), from this machine (with its file
// server), and from the domain that the machine belongs to with those that it trusts. The domain may be slow
// or away: then a call here ends with an error, and what is not known is never taken for "there is nobody".
// LookupAccountSidA and LookupAccountNameA know the same accounts. They wait at most kLookupTime, then fail
// with kNameNotYet or kDomainOffline, which mean "ask again later", never "no such account". A text that
// names an account of this machine and one of the domain fails with kAmbiguousName; with its domain before it
// the name means one account.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/nt/sid.h"

namespace permora {

// --- Errors beside ERROR_NONE_MAPPED ("there is no such account"). The system has a text for each.

// The domain that knows does not answer, and is not asked again for a while.
inline constexpr DWORD kDomainOffline = ERROR_NO_SUCH_DOMAIN;
// The domain has not answered in time; its answer is waited for elsewhere (FindAccountName, AccountNews).
inline constexpr DWORD kNameNotYet = ERROR_TIMEOUT;
inline constexpr DWORD kAmbiguousName = ERROR_DS_NAME_ERROR_NOT_UNIQUE;

// --- Names.

struct AccountName {
    std::string name;    // empty unless NameAnswer::kKnown
    std::string domain;  // empty where the account is shown by its bare name (Everyone)
    SID_NAME_USE use = SidTypeUnknown;

    friend bool operator==(const AccountName&, const AccountName&) = default;
};

enum class NameAnswer : std::uint8_t {
    kKnown,
    kNobody,   // no account has this SID, as far as can be known here (it may be one of a foreign domain)
    kDeleted,  // its domain is known and has no such account (any more): `domain` is its name
    kNotYet,   // show the SID meanwhile; AccountNews() changes when there is more to know
    kFailed,   // it cannot be asked (Samba's databases hidden, the name service out of order)
};

// How long a call that shows or takes one name waits for a domain.
inline constexpr std::chrono::milliseconds kLookupTime{2000};

// The names of a SID. Waits for a domain for `wait` at most, which may be 0: rows are then painted with what
// is known already, and a name that is not is asked for in the background. Known names are kept, so asking
// again costs next to nothing. `account` is stored in any case. Any thread.
NameAnswer FindAccountName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account);

// A number that is another one whenever a name has come in the background, names that were "not yet" may be
// asked for again, or StateOfDomain() has changed. Never waits: made for a timer of the window (once or twice
// a second) that then paints its rows and its status line anew. Any thread.
std::uint64_t AccountNews();

// --- The domain.

enum class DomainAvailability : std::uint8_t {
    kNone,     // this machine belongs to no domain, or none of its services is here
    kUnknown,  // it is being found out; AccountNews() changes when it is known
    kOnline,   // or not asked since it last answered
    kOffline,  // a call has failed, or taken longer than it may
};

struct DomainState {
    DomainAvailability availability = DomainAvailability::kNone;
    std::string domain;                           // "EXAMPLE"; empty with kNone and kUnknown
    std::chrono::system_clock::time_point since;  // of the first failure; with kOffline alone

    friend bool operator==(const DomainState&, const DomainState&) = default;
};

// Never waits; the first call begins to find out, in the background. While a domain is offline it is asked
// again once in a while, in the background too. Any thread.
DomainState StateOfDomain();

// --- Searching.

struct AccountRow {
    nt::Sid sid;
    SID_NAME_USE use = SidTypeUnknown;
    std::string name;
    std::string domain;       // empty where the account is shown by its bare name
    std::string description;  // the person's name, or what the account is for; mostly empty
};

struct SearchOutcome {
    // 0 when all accounts have been looked at; ERROR_OPERATION_ABORTED when the caller stopped it; else why
    // some could not be: kDomainOffline and others. Rows that were handed out before are right.
    DWORD error = ERROR_SUCCESS;
    std::string source;  // whose accounts are missing, "EXAMPLE" or this machine's name; empty without error
};

// Hands out the accounts in whose qualified name ("EXAMPLE\anna"), description or SID `filter` stands,
// without regard to the letter case of ASCII; all of them for an empty one. First come the well-known ones,
// then this machine's, then the domain's as they arrive; each once. `take` is called on the calling thread
// with the next rows (never none) as soon as they are there. The search looks at `isStopped` several times a
// second, also while a domain does not answer. It takes seconds for a large domain, so call it on a thread of
// your own.
//
// The search ends with an error (and says which source is missing) when a domain does not answer, also when
// it claims to have nobody.
SearchOutcome SearchAccounts(const std::string& filter, const std::atomic<bool>& isStopped,
                             const std::function<void(std::vector<AccountRow> rows)>& take);

// --- Groups.

enum class GroupsRequest : std::uint8_t {
    kUsual,  // what can be known without asking for a logon
    kExact,  // as a logon of the account would give them now
};

// What the groups of an account rest on, from the best to the least.
enum class GroupsOrigin : std::uint8_t {
    kThisMachine,  // an account of this machine, or a well-known one: they are as its databases say now
    kExact,        // a domain account: as a logon at this moment gives them
    kLastLogon,    // a domain account: as of its last logon here; what changed in the domain since is missing
    kWithoutLogon,  // a domain account that never logged on here: as its domain lists them; a user whose
                    // primary group is another than Domain Users may be counted among those wrongly
    kDomain,        // a domain account: one of the last two, this process may not see which (only root may)
};

// What a list grants to the account is nt::GrantedRights(list, sids) (platform/nt/granted_rights.h).
struct AccountGroups {
    // The account itself first, then everything that stands for it in access lists: its groups, those that
    // they belong to, Everyone, Authenticated Users, and the like. Each once.
    std::vector<nt::Sid> sids;
    GroupsOrigin origin = GroupsOrigin::kThisMachine;
};

// 0 or an error code; `groups` is then as it was, and nothing may be said about what the account may do.
// ERROR_NONE_MAPPED: its groups are not known here (a deleted account, one of a foreign domain, a name that
// nobody logs on as). kDomainOffline: its domain does not answer. For kExact of a domain account besides:
// ERROR_ACCESS_DENIED when this process is not root's (an administrator's), ERROR_NOT_SUPPORTED where the
// account cannot log on (a group) or what it takes is not installed. Accounts of this machine are exact
// anyway, so there kExact is the same as kUsual. Waits up to kGroupsTime. Any thread.
DWORD FindAccountGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups);
inline constexpr std::chrono::milliseconds kGroupsTime{10'000};

// Whether kExact can be asked for here at all: the machine belongs to a domain, and this process may ask.
// Never waits.
bool MayAskForExactGroups();

}  // namespace permora
