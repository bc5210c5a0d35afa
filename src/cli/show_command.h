// The listing of one or more objects' access lists.
#pragma once

#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"

namespace permora {

// Prints every target in order; returns whether all could be read. An object that cannot be read is named on
// standard error and left out.
bool RunShow(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages);

}  // namespace permora
