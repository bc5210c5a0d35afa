#include "platform/linux/accounts/memberships.h"

#include <sys/types.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/accounts/samba_accounts.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/accounts/unix_sids.h"
#include "platform/linux/samba/samba_places.h"

namespace permora::host {
namespace {

const nt::Sid& Everyone() {
    static const nt::Sid kSid(1, {0});
    return kSid;
}

const nt::Sid& Anonymous() {
    static const nt::Sid kSid(5, {7});
    return kSid;
}

constexpr uid_t kRoot = 0;

// Names of what nobody logs on as: placeholders for the owner and group of each object, which an access check
// never finds in a list; domains; integrity levels.
bool IsAccountWithGroups(const nt::Sid& sid, SID_NAME_USE use) {
    constexpr std::uint64_t kCreatorAuthority = 3;
    return sid.Authority() != kCreatorAuthority &&
           (use == SidTypeUser || use == SidTypeGroup || use == SidTypeAlias || use == SidTypeWellKnownGroup);
}

// The SIDs that were found, and how far their own groups have been looked for.
class Memberships {
  public:
    explicit Memberships(const nt::Sid& account) : sids{account} {
        // Whoever is not logged on at all is no part of everyone.
        if (account != Anonymous()) Add(Everyone());
    }

    DWORD Complete() {
        const DWORD sambaError = LearnSambaGroups();
        if (sambaError != ERROR_SUCCESS) return sambaError;
        const nt::Sid account = sids.front();  // adding moves them
        const DWORD unknown = CheckIsKnown(account);
        if (unknown != ERROR_SUCCESS) return unknown;
        AddServiceGroups(account);
        for (std::size_t next = 0; next < sids.size(); ++next) {
            const nt::Sid sid = sids[next];
            const DWORD error = AddGroupsOf(sid);
            if (error != ERROR_SUCCESS) return error;
        }
        return ERROR_SUCCESS;
    }

    std::vector<nt::Sid> Take() { return std::move(sids); }

  private:
    void Add(const nt::Sid& sid) {
        if (std::find(sids.begin(), sids.end(), sid) == sids.end()) sids.push_back(sid);
    }

    // An account without a name here has groups that nobody here can list, as one of a domain or one that was
    // deleted.
    static DWORD CheckIsKnown(const nt::Sid& sid) {
        Account account;
        const DWORD error = FindAccountHere(sid, account);
        if (error != ERROR_SUCCESS) return error;
        const bool isUnknown = account.use == SidTypeUser && !UserForSid(sid);  // Samba's alone
        return isUnknown || !IsAccountWithGroups(sid, account.use) ? ERROR_NONE_MAPPED : ERROR_SUCCESS;
    }

    // The groups of the accounts under which Windows itself runs.
    void AddServiceGroups(const nt::Sid& account) {
        if (account == nt::Sid(5, {18})) Add(nt::Sid(5, {32, 544}));  // SYSTEM is one of the Administrators
        if (account == nt::Sid(5, {18}) || account == nt::Sid(5, {19}) || account == nt::Sid(5, {20}))
            AddAuthenticatedUsers();
    }

    void AddAuthenticatedUsers() {
        Add(nt::Sid(5, {11}));
        // Windows puts them into Users. Samba does not, unless the group has them as members.
        if (ThisMachine().source != RelativeIdSource::kSamba) Add(nt::Sid(5, {32, 545}));
    }

    DWORD AddGroupsOf(const nt::Sid& sid) {
        AddSambaGroupsOf(sid);
        const std::optional<gid_t> group = GroupForSid(sid);
        const std::optional<uid_t> user = UserForSid(sid);
        const bool isOfDomain = (group && IsOfDomain(AccountKind::kGroup, *group, SidForGroup(*group))) ||
                                (user && IsOfDomain(AccountKind::kUser, *user, SidForUser(*user)));
        if (isOfDomain) return ERROR_NONE_MAPPED;
        if (group) AddGroup(*group);
        return user ? AddUser(*user) : ERROR_SUCCESS;
    }

    // An account that neither Samba nor the host itself keeps. Its number does not show which SIDs it and its
    // groups have in the domain.
    static bool IsOfDomain(AccountKind kind, id_t id, const nt::Sid& own) {
        const bool isSambas = own != UnixSid(kind, id) && !TheDomainAccounts().IsOfDomain(own);
        return ThisMachinesSambaPlaces().isInDomain && !isSambas && !IsInHostFiles(kind, id);
    }

    // Without Samba's groups the list would be incomplete.
    DWORD LearnSambaGroups() {
        const RelativeIdSource source = ThisMachine().source;
        if (source == RelativeIdSource::kHidden) return ERROR_ACCESS_DENIED;
        if (source == RelativeIdSource::kSamba) aliases = &AllSambaAliases();
        return aliases != nullptr ? aliases->error : ERROR_SUCCESS;
    }

    // Each account of the host has two SIDs, and a list may name either.
    void AddGroup(gid_t group) {
        Add(SidForGroup(group));
        Add(UnixSid(AccountKind::kGroup, group));
    }

    DWORD AddUser(uid_t user) {
        std::vector<gid_t> groups;
        const DWORD error = ListGroupsOf(user, groups);
        if (error != ERROR_SUCCESS) return error;
        const nt::Sid own = SidForUser(user);
        Add(own);
        Add(UnixSid(AccountKind::kUser, user));
        for (const gid_t group : groups)
            AddGroup(group);
        AddSystemGroups(own);
        if (user == kRoot) Add(nt::Sid(5, {32, 544}));
        return ERROR_SUCCESS;
    }

    // Those that the system puts every user into.
    void AddSystemGroups(const nt::Sid& user) {
        const nt::Sid* machine = MachineSid();
        const bool isBelowMachine = machine != nullptr && user.IsDirectlyBelow(*machine);
        if (isBelowMachine && user == machine->Append(kGuestId)) {
            Add(nt::Sid(5, {32, 546}));  // Guests
            return;
        }
        if (isBelowMachine) {
            if (const std::optional<nt::Sid> none = machine->Append(kNoneId)) Add(*none);
        }
        AddAuthenticatedUsers();
    }

    void AddSambaGroupsOf(const nt::Sid& sid) {
        if (aliases == nullptr) return;
        for (const SambaAlias& alias : aliases->list)
            if (std::find(alias.members.begin(), alias.members.end(), sid) != alias.members.end())
                Add(alias.sid);
    }

    std::vector<nt::Sid> sids;
    const SambaAliases* aliases = nullptr;
};

}  // namespace

DWORD FindMemberships(const nt::Sid& account, std::vector<nt::Sid>& sids) {
    Memberships memberships(account);
    const DWORD error = memberships.Complete();
    if (error == ERROR_SUCCESS) sids = memberships.Take();
    return error;
}

}  // namespace permora::host
