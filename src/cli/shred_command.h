// The command that deletes files for good: shred.
#pragma once

#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"

namespace permora {

// Whether the user agrees to the deletion, by --yes or by typing it on a terminal that lists what goes. Says
// why when not.
bool ConfirmShred(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages);

// Overwrites and deletes every target with all that is in it, with a progress line on a terminal, and ends
// with a line of counts. What stays is named with the reason: a failure, a drive, or without --force a file
// that cannot be overwritten in place. An interrupt (Ctrl-C) ends it at the next sector. Returns whether all
// is gone.
bool RunShred(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages);

}  // namespace permora
