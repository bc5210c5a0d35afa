// Shares that users of this machine made for themselves (`net usershare`), each in a file that belongs to its
// maker.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/shares/samba_listing.h"

namespace permora::host {

// All answer with 0 or an error code.

// The list that the server makes of the share's grants. ERROR_INVALID_SECURITY_DESCR when they cannot be read
// as such, ERROR_NONE_MAPPED for an account that nobody knows.
DWORD ReadUserShareDescriptor(const SambaSection& share, std::vector<std::uint8_t>& descriptor);

// The share remains its maker's. ERROR_NOT_SUPPORTED for what such shares do not have: a limit on users,
// lists that say more than everything, reading or nothing for an account, lists and remarks too long for the
// share's file.
DWORD ChangeUserShare(const SambaSection& share, const ShareChange& change);

// `hostPath` is the folder of the host. Errors as above, ERROR_FILE_READ_ONLY where such shares are switched
// off, NERR_DuplicateShare also for a share that the server does not serve because it is damaged, and
// ERROR_INVALID_NAME for the name of one of the host's users.
DWORD AddUserShare(const Share& share, const std::string& hostPath);

DWORD RemoveUserShare(const SambaSection& share);

}  // namespace permora::host
