#include "platform/group_members.h"

#include <algorithm>
#include <optional>
#include <string>

#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/accounts/samba_accounts.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/accounts/unix_sids.h"
#include "platform/linux/samba/samba_places.h"

namespace permora {
namespace host {
namespace {

// The members that this machine knows of one of its groups: the other way round as memberships.cpp has it.
class MachineGroup {
  public:
    explicit MachineGroup(const nt::Sid& searched) : group(searched) {}

    DWORD Find() {
        DWORD error = AddSambaMembers();
        if (error == ERROR_SUCCESS) error = AddHostMembers();
        if (error == ERROR_SUCCESS) AddSystemMembers();
        return error;
    }
    std::vector<nt::Sid> Take() { return std::move(sids); }

  private:
    void Add(const nt::Sid& sid) {
        if (std::ranges::find(sids, sid) == sids.end()) sids.push_back(sid);
    }

    DWORD AddSambaMembers() {
        const RelativeIdSource source = ThisMachine().source;
        if (source == RelativeIdSource::kHidden) return ERROR_ACCESS_DENIED;
        if (source != RelativeIdSource::kSamba) return ERROR_SUCCESS;
        const SambaAliases& aliases = AllSambaAliases();
        if (aliases.error != ERROR_SUCCESS) return aliases.error;
        for (const SambaAlias& alias : aliases.list)
            if (alias.sid == group)
                for (const nt::Sid& member : alias.members)
                    Add(member);
        const nt::Sid* const machine = MachineSid();
        if (machine == nullptr || machine->Append(kNoneId) != group) return ERROR_SUCCESS;
        const SambaAccounts& users = AllSambaAccounts(AccountKind::kUser);
        for (const SambaAccount& user : users.All())
            if (user.sid != machine->Append(kGuestId)) Add(user.sid);
        return users.Error();
    }

    DWORD AddHostMembers() {
        const std::optional<gid_t> id = GroupForSid(group);
        if (!id) return ERROR_SUCCESS;
        // The number of a domain's group, whose members the domain knows.
        if (ThisMachinesSambaPlaces().isInDomain && !IsInHostFiles(AccountKind::kGroup, *id)) {
            nt::Sid ofDomain;
            if (TheDomainAccounts().FindSidOf(AccountKind::kGroup, *id, ofDomain) == ERROR_SUCCESS)
                return TheDomainAccounts().FindMembers(ofDomain, sids);
        }
        std::vector<std::string> names;
        if (const DWORD error = ListMembersOf(*id, names); error != ERROR_SUCCESS) return error;
        for (const std::string& name : names) {
            nt::Sid member;
            const DWORD error = FindMember(name, member);
            if (error == ERROR_SUCCESS) Add(member);
            // A user who was deleted may still be named.
            else if (error != ERROR_NONE_MAPPED)
                return error;
        }
        return ERROR_SUCCESS;
    }

    // As the name service calls its users; those of a domain have it before their name.
    static DWORD FindMember(const std::string& name, nt::Sid& member) {
        if (name.find('\\') != name.npos) return FindAccountSid(name, member);
        id_t user = 0;
        const DWORD error = FindHostId(AccountKind::kUser, name, user);
        return error == ERROR_SUCCESS ? FindSidForId(AccountKind::kUser, user, member) : error;
    }

    void AddSystemMembers() {
        constexpr uid_t kRoot = 0;
        if (group == nt::Sid(5, {32, 544})) Add(SidForUser(kRoot));
        // Windows puts everybody who has logged on into Users. Samba does not, unless they are members.
        if (group == nt::Sid(5, {32, 545}) && ThisMachine().source != RelativeIdSource::kSamba)
            Add(nt::Sid(5, {11}));
        const nt::Sid* const machine = MachineSid();
        const std::optional<nt::Sid> guest = machine != nullptr ? machine->Append(kGuestId) : std::nullopt;
        Account account;
        if (group == nt::Sid(5, {32, 546}) && guest && FindAccountHere(*guest, account) == ERROR_SUCCESS)
            Add(*guest);
    }

    const nt::Sid group;
    std::vector<nt::Sid> sids;
};

DWORD FindMembers(const nt::Sid& group, GroupMembers& members) {
    Account account;
    const DWORD error = FindAccountOfSid(group, account);
    if (error != ERROR_SUCCESS) return error == kNameNotYet ? kDomainOffline : error;
    GroupMembers found;
    if (account.use == SidTypeWellKnownGroup) {
        found.isOpen = true;
    } else if (account.use != SidTypeGroup && account.use != SidTypeAlias) {
        return ERROR_NONE_MAPPED;
    } else if (DomainAccounts::IsOfDomain(group)) {
        if (const DWORD asked = TheDomainAccounts().FindMembers(group, found.sids); asked != ERROR_SUCCESS)
            return asked;
    } else {
        MachineGroup here(group);
        if (const DWORD asked = here.Find(); asked != ERROR_SUCCESS) return asked;
        found.sids = here.Take();
    }
    members = std::move(found);
    return ERROR_SUCCESS;
}

}  // namespace
}  // namespace host

DWORD FindGroupMembers(const nt::Sid& group, GroupMembers& members) {
    return host::FindMembers(group, members);
}

}  // namespace permora
