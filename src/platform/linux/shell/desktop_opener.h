// Hands files and addresses to the programs that the desktop has for them.
#pragma once

#include <string>

#include "platform/api/errors.h"

namespace permora::host {

// Asks the desktop's own tool to open an absolute host path or an address. Returns when the tool has ended,
// or after a second: a viewer may be running under it then. The tool and what it starts live on without this
// process; they get none of its open files, and of its environment only what leads to the desktop.
//
// 0, or ERROR_FILE_NOT_FOUND when there is no such tool on this machine, ERROR_NO_ASSOCIATION when it
// refused, or what starting it failed with.
DWORD OpenWithDesktop(const std::string& target);

}  // namespace permora::host
