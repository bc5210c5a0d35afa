#include "platform/api/effective_rights.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/accounts/memberships.h"
#include "platform/nt/ace_bits.h"
#include "platform/nt/acl.h"
#include "platform/raw_security.h"

namespace {

namespace nt = permora::nt;

// [MS-DTYP] 2.5.3.2: the first entry with a right decides it. Generic rights do not count: they are mapped
// when an entry is set or inherited, and an access check ignores those that are left.
DWORD RightsOf(const nt::Acl& acl, const std::vector<nt::Sid>& sids) {
    DWORD granted = 0;
    DWORD denied = 0;
    for (const nt::Ace& entry : acl.entries) {
        if ((entry.flags & nt::kInheritOnly) != 0) continue;
        if (std::find(sids.begin(), sids.end(), entry.sid) == sids.end()) continue;
        if (entry.type == ACCESS_ALLOWED_ACE_TYPE) granted |= entry.mask & ~denied;
        if (entry.type == ACCESS_DENIED_ACE_TYPE) denied |= entry.mask & ~granted;
    }
    return granted & ~nt::kGenericRights;
}

}  // namespace

void WINAPI BuildTrusteeWithSidA(PTRUSTEE_A trustee, PSID sid) {
    *trustee = {nullptr, NO_MULTIPLE_TRUSTEE, TRUSTEE_IS_SID, TRUSTEE_IS_UNKNOWN, static_cast<LPSTR>(sid)};
}

DWORD WINAPI GetEffectiveRightsFromAclA(PACL acl, PTRUSTEE_A trustee, PACCESS_MASK rights) {
    if (trustee == nullptr || rights == nullptr || trustee->TrusteeForm != TRUSTEE_IS_SID)
        return ERROR_INVALID_PARAMETER;
    const std::optional<nt::Sid> account = permora::SidOf(trustee->ptstrName);
    if (!account) return ERROR_INVALID_SID;
    if (acl == nullptr) {
        *rights = FILE_ALL_ACCESS;
        return ERROR_SUCCESS;
    }
    const std::optional<nt::Acl> list = permora::AclOf(acl);
    if (!list) return ERROR_INVALID_ACL;
    std::vector<nt::Sid> sids;
    const DWORD error = permora::host::FindMemberships(*account, sids);
    if (error != ERROR_SUCCESS) return error;
    *rights = RightsOf(*list, sids);
    return ERROR_SUCCESS;
}
