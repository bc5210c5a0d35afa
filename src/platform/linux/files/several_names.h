// Whether a file has further names (hard links).
#pragma once

#include <string>

#include "platform/api/errors.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

// `hostName` is the name by which it was found in the open folder `folder`. A file that has one name alone
// has that one: ERROR_FILE_NOT_FOUND when the name is gone, ERROR_FILE_INVALID when it leads to another
// object by now. A short name in the old style is a second one of NTFS's own, stands beside the first and
// does not count; in doubt there are several. An error code leaves `answer` alone.
DWORD AskSeveralNames(int folder, const std::string& hostName, const ObjectHandle& file, bool& answer);

}  // namespace permora::host
