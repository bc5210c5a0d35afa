// What an access list leaves to one account.
#pragma once

#include "security/access_rights.h"

namespace permora {

// The rights of the account with its groups, denials taken off. A list that is null has no answer: everyone
// may do everything. 0 or a system error code; `rights` is then untouched.
DWORD FindEffectiveRights(PACL dacl, PSID account, DWORD& rights);

// Whether the row of a right is to be marked. "Full control" asks for every bit of RIGHTS_DISPLAY_MASK, more
// than the rights of files are.
bool IsEffective(const AccessRight& right, DWORD rights);

}  // namespace permora
