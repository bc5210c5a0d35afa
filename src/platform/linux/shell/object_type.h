// What kind of object something is, as the desktop sees it.
#pragma once

#include <string>

#include "platform/api/errors.h"

namespace permora::host {

// The MIME type of the object that a path of platform/api/files.h names: from its kind, else from its name. A
// link is of the type of what it leads to. 0 or an error code.
DWORD TypeOfObject(const char* path, std::string& type);

}  // namespace permora::host
