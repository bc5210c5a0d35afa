// What this program says to the one that it starts as administrator, and to the user when that fails.
#pragma once

#include <string>
#include <vector>

#include "app/command_line.h"
#include "platform/administrator.h"

namespace permora {

// The arguments by which the new process opens the same window on the same objects: absolute paths as the
// host writes them, since it has another current directory and may have other drive letters. The toolkit's
// options are the user's own and not handed on. False: a path cannot be written so.
bool MakeArgumentsForAdministrator(const CommandLine& commandLine, std::vector<std::string>& arguments);

// Starts the program with them, as the service of this name does.
AdministratorStart StartAsAdministrator(const CommandLine& commandLine, AdministratorWait wait,
                                        int& exitCode);

// For people; empty when it has started.
std::string FailureText(AdministratorStart start);

}  // namespace permora
