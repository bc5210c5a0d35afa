// From the name of an account to the account.
#pragma once

#include "security/account_record.h"

namespace permora {

// Gives `account` the SID of the account of this machine that is called so: name, DOMAIN\name or
// MACHINE\name. A system error code; `account` is untouched on failure.
DWORD LookupAccountByName(LPCSTR name, AccountRecord& account);

}  // namespace permora
