// The command of the installation: setup.
#pragma once

#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"

namespace permora {

// Tells the windowed program its folder, which must hold its help file: for the user who runs this, or for
// every user who was told no other. Returns whether that was done.
bool RunSetup(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages);

}  // namespace permora
