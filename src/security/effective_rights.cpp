#include "security/effective_rights.h"

#include "platform/api/effective_rights.h"

namespace permora {

DWORD FindEffectiveRights(PACL dacl, PSID account, DWORD& rights) {
    TRUSTEE_A trustee{};
    BuildTrusteeWithSidA(&trustee, account);
    return GetEffectiveRightsFromAclA(dacl, &trustee, &rights);
}

bool IsEffective(const AccessRight& right, DWORD rights) {
    if (right.bits == FULL_CONTROL_RIGHTS) return (rights & RIGHTS_DISPLAY_MASK) == RIGHTS_DISPLAY_MASK;
    return (rights & right.bits) != 0;
}

}  // namespace permora
