#include "security/effective_rights.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/api/effective_rights.h"
#include "platform/api/errors.h"
#include "platform/group_members.h"
#include "platform/nt/granted_rights.h"
#include "platform/raw_security.h"
#include "platform/system_message.h"
#include "security/access_entry_list.h"
#include "security/object_server.h"

namespace permora {
namespace {

// Accounts that the system calls groups although they have no members: ANONYMOUS LOGON, SYSTEM and the
// services.
constexpr std::array<std::string_view, 5> kWithoutMembers = {"S-1-5-7", "S-1-5-17", "S-1-5-18", "S-1-5-19",
                                                             "S-1-5-20"};

bool HasMembers(AccountRecord& account) {
    account.Lookup();
    return IsGroup(account.use) &&
           std::ranges::find(kWithoutMembers, account.GetSidText()) == kWithoutMembers.end();
}

bool HasGenericRights(const AccessEntry& entry) {
    return !entry.IsOfOtherType() && entry.HasIdleGenericRights();
}

DWORD AskTheSystem(PACL dacl, PSID account, DWORD& rights) {
    TRUSTEE_A trustee{};
    BuildTrusteeWithSidA(&trustee, account);
    return GetEffectiveRightsFromAclA(dacl, &trustee, &rights);
}

// Half a sentence; empty when there is nothing to say.
std::string RemarkOnGroups(GroupsOrigin origin, AccountRecord& account) {
    const std::string groups = "the groups of " + AccountDisplayName(account);
    switch (origin) {
        case GroupsOrigin::kThisMachine:
            return {};
        case GroupsOrigin::kExact:
            return groups + " are those that a logon gives it now";
        case GroupsOrigin::kLastLogon:
            return groups + " are as of the last logon; later changes in the domain are not counted";
        case GroupsOrigin::kWithoutLogon:
            return groups +
                   " are as the domain lists them, since it has not logged on here; Domain Users is " +
                   "counted in any case";
        case GroupsOrigin::kDomain:
            break;
    }
    return groups + " may be as of the last logon; later changes in the domain are then not counted";
}

}  // namespace

DWORD FindEffectiveRights(PACL dacl, const AccountRecord& account, GroupsRequest request,
                          EffectiveRights& effective) {
    if (!account.sid) return ERROR_INVALID_SID;
    AccountGroups groups;
    if (const DWORD error = FindAccountGroups(*account.sid, request, groups); error != ERROR_SUCCESS)
        return error;
    if (request == GroupsRequest::kExact) return FindEffectiveRights(dacl, groups, effective);
    DWORD rights = 0;
    if (const DWORD error = AskTheSystem(dacl, account.RawSid(), rights); error != ERROR_SUCCESS)
        return error;
    effective = {rights, groups.origin};
    return ERROR_SUCCESS;
}

DWORD FindEffectiveRights(PACL dacl, const AccountGroups& groups, EffectiveRights& effective) {
    const std::optional<nt::Acl> list = AclOf(dacl);
    if (!list) return ERROR_INVALID_ACL;
    effective = {nt::GrantedRights(*list, groups.sids), groups.origin};
    return ERROR_SUCCESS;
}

DWORD FindGrants(PACL dacl, const AccountGroups& groups, std::vector<Grant>& grants) {
    const std::optional<nt::Acl> list = AclOf(dacl);
    if (!list) return ERROR_INVALID_ACL;
    std::vector<Grant> found;
    for (const nt::RightsDecision& decision : nt::RightsDecisions(*list, groups.sids))
        if (decision.isGrant) found.push_back({decision.index, decision.rights});
    grants = std::move(found);
    return ERROR_SUCCESS;
}

std::string UnknownGroupsText(DWORD error, GroupsRequest request, AccountRecord& account) {
    const std::string groups = "the groups of " + AccountDisplayName(account);
    if (error == ERROR_NONE_MAPPED) return groups + " are not known here";
    if (error == kDomainOffline || error == kNameNotYet)
        return groups + " are not known, since its domain does not answer";
    if (request == GroupsRequest::kExact && error == ERROR_ACCESS_DENIED)
        return groups + " as a logon gives them now can be asked for by root alone";
    if (request == GroupsRequest::kExact && error == ERROR_NOT_SUPPORTED) {
        return groups +
               " as a logon gives them now cannot be asked for: it cannot log on, or Samba's tools are not "
               "installed";
    }
    if (error == kListNamesUntold)
        return "the list names groups of which the server does not tell who is in them, and whether " +
               AccountDisplayName(account) + " is among those is not known here";
    return {};
}

std::string NoRightsText(DWORD error, GroupsRequest request, AccountRecord& account) {
    const std::string text = UnknownGroupsText(error, request, account);
    return text.empty() ? SystemMessageLine(error) : text;
}

std::vector<std::string> RemarksOnAccount(GroupsOrigin origin, AccountRecord& account) {
    std::vector<std::string> remarks;
    if (std::string remark = RemarkOnGroups(origin, account); !remark.empty())
        remarks.push_back(std::move(remark));
    if (HasMembers(account)) {
        remarks.push_back("members of " + AccountDisplayName(account) +
                          " may have more or less, by entries for themselves and their other groups");
    }
    return remarks;
}

std::vector<std::string> RemarksOnRights(PACL dacl, AccountRecord& account,
                                         const EffectiveRights& effective) {
    const DWORD rights = effective.rights;
    std::vector<std::string> remarks = RemarksOnAccount(effective.origin, account);
    if ((rights & FULL_CONTROL_RIGHTS) != 0 && (rights & SYNCHRONIZE) == 0) {
        remarks.emplace_back(
            "over the network these rights cannot be used, since the right to synchronize is not among them");
    }
    const AccessEntryList entries(AcesOf(dacl));
    if (std::ranges::any_of(entries.Entries(), HasGenericRights))
        remarks.emplace_back("generic rights, which stand in the list, are not counted");
    return remarks;
}

std::string AsSentence(std::string remark) {
    if (remark.front() >= 'a' && remark.front() <= 'z')
        remark.front() = static_cast<char>(remark.front() - ('a' - 'A'));
    return remark + '.';
}

bool IsEffective(const AccessRight& right, DWORD rights) {
    if (right.bits == FULL_CONTROL_RIGHTS) return (rights & RIGHTS_DISPLAY_MASK) == RIGHTS_DISPLAY_MASK;
    return (rights & right.bits) != 0;
}

}  // namespace permora
