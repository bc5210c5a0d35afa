// Whether a file has further names (hard links).
#pragma once

#include <string>

#include "platform/api/errors.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

// `hostName` is the name by which it was found. A short name in the old style is a second one of NTFS's own,
// goes with the first and does not count; in doubt there are several. 0 or an error code, which leaves
// `answer` alone.
DWORD AskSeveralNames(const ObjectHandle& file, const std::string& hostName, bool& answer);

}  // namespace permora::host
