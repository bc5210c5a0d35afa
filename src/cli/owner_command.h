// The command that shows and sets owners: owner.
#pragma once

#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"
#include "security/account_record.h"

namespace permora {

// Prints a line with the owner of each target; with an account it first makes that the owner, with tree of
// everything below the folders among them too, and ends with a line of counts. Links are never followed. An
// object that fails is named on standard error with the reason, those in a tree too, and the others are still
// done; an interrupt (Ctrl-C) ends a tree between two objects. Returns whether all were done.
bool RunOwner(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
              ConsoleMessages& messages);

}  // namespace permora
