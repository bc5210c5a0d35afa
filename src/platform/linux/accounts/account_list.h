// The names of all accounts of this machine.
#pragma once

#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/accounts/account_names.h"

namespace permora::host {

// Users or groups as DOMAIN\name texts, each of which FindAccountSid takes for exactly that account: Samba's
// where it runs, then the host's that have none there. A name that cannot stand in such a text is left out.
DWORD ListAccountNames(AccountKind kind, std::vector<std::string>& names);

}  // namespace permora::host
