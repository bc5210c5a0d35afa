// The command that gives whole folder trees what they inherit: reset.
#pragma once

#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"

namespace permora {

// Whether the user agrees to the reset: by --yes, by typing it on a terminal, or because --dry-run changes
// nothing. Says why when not.
bool ConfirmReset(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages);

// Resets everything below each target, or with dryRun counts what would change, with a progress line on a
// terminal, and ends with a line of counts. A target that is no folder, or that hands nothing down, is named
// and left alone. An interrupt (Ctrl-C) ends it between two objects. Returns whether nothing was passed over
// and nothing was left out.
bool RunReset(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages);

}  // namespace permora
