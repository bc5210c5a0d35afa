// The command that does what the security wizard's permissions page does: assign.
#pragma once

#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"
#include "security/account_record.h"

namespace permora {

// Gives every target the list that comes of the first one's own entries when `account` has exactly
// `arguments.rights`, or with dryRun prints what that would make of each. When that list cannot be made,
// nothing is touched. An object that cannot be changed is named on standard error with the reason and left as
// it is; the others are still done. Returns whether all were done.
bool RunAssign(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
               ConsoleMessages& messages);

}  // namespace permora
