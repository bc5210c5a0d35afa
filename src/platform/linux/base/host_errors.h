// From the C library's error numbers to the system's error codes and back.
#pragma once

#include "platform/api/errors.h"

namespace permora::host {

// The error code with the meaning of `errorNumber` (an errno value, not 0). Numbers without a counterpart
// give ERROR_IO_DEVICE.
DWORD ErrorFromErrno(int errorNumber);

// The same for what open(2) says of a regular file with O_NONBLOCK: what it did not wait for is the lease of
// another (ERROR_SHARING_VIOLATION), who may keep it for as long as /proc/sys/fs/lease-break-time says.
DWORD ErrorFromOpening(int errorNumber);

// The errno value whose text describes a file system error code best, or 0 when the code is not one of the
// file system's. FormatMessageA takes those codes' texts from the C library.
int ErrnoForMessage(DWORD code);

}  // namespace permora::host
