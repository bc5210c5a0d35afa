// The process's current directory, which is the kernel's own: an open folder that stays the same one when it
// is renamed.
#pragma once

#include <string>

#include "platform/api/errors.h"

namespace permora::host {

// Its absolute host path, without links. ERROR_PATH_NOT_FOUND when it has none any more (deleted) or lies
// outside of what the process can see.
DWORD CurrentHostPath(std::string& hostPath);

}  // namespace permora::host
