#include "platform/api/effective_rights.h"

#include <optional>

#include "platform/accounts.h"
#include "platform/api/errors.h"
#include "platform/nt/acl.h"
#include "platform/nt/granted_rights.h"
#include "platform/raw_security.h"

void WINAPI BuildTrusteeWithSidA(PTRUSTEE_A trustee, PSID sid) {
    *trustee = {nullptr, NO_MULTIPLE_TRUSTEE, TRUSTEE_IS_SID, TRUSTEE_IS_UNKNOWN, static_cast<LPSTR>(sid)};
}

DWORD WINAPI GetEffectiveRightsFromAclA(PACL acl, PTRUSTEE_A trustee, PACCESS_MASK rights) {
    if (trustee == nullptr || rights == nullptr || trustee->TrusteeForm != TRUSTEE_IS_SID)
        return ERROR_INVALID_PARAMETER;
    const std::optional<permora::nt::Sid> account = permora::SidOf(trustee->ptstrName);
    if (!account) return ERROR_INVALID_SID;
    if (acl == nullptr) {
        *rights = FILE_ALL_ACCESS;
        return ERROR_SUCCESS;
    }
    const std::optional<permora::nt::Acl> list = permora::AclOf(acl);
    if (!list) return ERROR_INVALID_ACL;
    permora::AccountGroups groups;
    const DWORD error = permora::FindAccountGroups(*account, permora::GroupsRequest::kUsual, groups);
    if (error != ERROR_SUCCESS) return error;
    *rights = permora::nt::GrantedRights(*list, groups.sids);
    return ERROR_SUCCESS;
}
