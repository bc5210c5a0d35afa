// "accounts": the accounts that this machine knows.
#pragma once

#include "cli/arguments.h"

namespace permora {

// Always true: there is nothing that could fail.
bool RunAccounts(const Arguments& arguments);

}  // namespace permora
