// The command of the installation: setup.
#pragma once

#include "cli/arguments.h"
#include "cli/messages.h"

namespace permora {

// Tells the windowed program its folder, which must hold its help file: for the user who runs this, or for
// every user who was told no other. Returns whether that was done.
bool RunSetup(const Arguments& arguments, ConsoleMessages& messages);

}  // namespace permora
