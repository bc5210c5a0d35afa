// The commands about shares: what there are, and the access lists that the server keeps for them.
#pragma once

#include "cli/arguments.h"
#include "cli/messages.h"
#include "security/account_record.h"

namespace permora {

// Each names what fails on standard error, goes on with the others and returns whether all was done.

// Prints all shares of this machine.
bool RunShares(const Arguments& arguments, ConsoleMessages& messages);

// Prints the shares that the user named, each with its list. Reads only.
bool RunShowShares(const Arguments& arguments, ConsoleMessages& messages);

// Grants, denies or revokes rights of `account` in the lists of the named shares, or with dryRun prints what
// would come of it.
bool RunChangeShares(const Arguments& arguments, const AccountRecord& account, ConsoleMessages& messages);

}  // namespace permora
