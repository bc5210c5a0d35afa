// The terminal program as a whole: its help, how its arguments are read, and how it ends.
#pragma once

#include <memory>
#include <span>

#include "cli/command.h"

namespace permora {

using MakeCommand = std::unique_ptr<Command>(const CommandParent& parent);

// Runs the command that the arguments name. `commands` make all commands, in the order of the help. Returns
// the exit code of the program.
int RunProgram(std::span<MakeCommand* const> commands, int argumentCount, const char* const* argumentTexts);

}  // namespace permora
