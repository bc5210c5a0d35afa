// "accounts": the accounts that this machine knows.
#pragma once

#include "cli/arguments.h"
#include "cli/messages.h"

namespace permora {

// On false, the reason has been reported.
bool RunAccounts(const Arguments& arguments, ConsoleMessages& messages);

}  // namespace permora
