// What every walk through folders needs of the host.
#pragma once

#include <sys/types.h>

#include "platform/linux/base/unique_fd.h"

namespace permora::host {

// Opens the entry `hostName` of an open folder, a link itself and never its target, unless something is
// mounted on it (EXDEV). `flags` and `mode` are those of open(2); O_NOFOLLOW and O_CLOEXEC are added. 0 or an
// errno value; `opened` is replaced only on success.
int OpenUnmountedEntry(int folder, const char* hostName, int flags, UniqueFd& opened, mode_t mode = 0);

// A walk holds a descriptor for each level of folders. A thousand is the usual limit, tens of thousands are
// usually allowed on request.
void RaiseDescriptorLimit();

}  // namespace permora::host
