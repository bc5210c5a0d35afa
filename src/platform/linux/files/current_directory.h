// The process's current directory, which is the kernel's own: an open folder that stays the same one when it
// is renamed.
#pragma once

#include <string>

#include "platform/api/errors.h"

namespace permora::host {

// Its absolute host path, without links. ERROR_PATH_NOT_FOUND when it has none any more (deleted) or lies
// outside of what the process can see.
DWORD CurrentHostPath(std::string& hostPath);

// The contract of the services that hand out a text: the length when it fits, else the size that it needs.
DWORD HandOut(const std::string& text, DWORD size, LPSTR buffer);

}  // namespace permora::host
