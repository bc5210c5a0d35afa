// The owner of a file, folder or drive root. Results are system error codes.
#pragma once

#include "platform/held_object.h"
#include "security/account_record.h"

namespace permora {

// An object may have no owner: `account` is then left without a SID.
DWORD ReadObjectOwner(const HeldObject& object, AccountRecord& account);

}  // namespace permora
