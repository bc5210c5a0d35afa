// Shares that users of this machine made for themselves (`net usershare`), each in a file that belongs to its
// maker.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/shares/samba_listing.h"

namespace permora::host {

// All return 0 or an error code.

// Shares that users made for themselves. Left out are those that the server does not serve either, because
// their folder is gone or their file is damaged. None where there can be none, or they are not for our eyes.
DWORD ReadUserShares(std::vector<SambaSection>& sections);
// One of them, as its own file has it: in the whole list another file could pass for it.
// NERR_NetNameNotFound, NERR_DuplicateShare where it cannot be told which of several files it is; a share
// that is left out above is a failure of the tool.
DWORD ReadUserShare(const std::string& name, SambaSection& section);

// The list that the server makes of the share's grants. ERROR_INVALID_SECURITY_DESCR when they cannot be read
// as such, ERROR_NONE_MAPPED for an account that nobody knows.
DWORD ReadUserShareDescriptor(const SambaSection& share, std::vector<std::uint8_t>& descriptor);

// Changes the share as its file has it now, and its file remains its maker's. ERROR_FILE_INVALID when someone
// else has changed the share meanwhile, ERROR_NOT_SUPPORTED for what such shares do not have: a limit on
// users, lists that say more than everything, reading or nothing for an account, lists and remarks too long
// for the share's file.
DWORD ChangeUserShare(const std::string& name, const ShareChange& change);

// `hostPath` is the folder of the host. Errors as above, ERROR_FILE_READ_ONLY where such shares are switched
// off, NERR_DuplicateShare also for a share that the server does not serve because it is damaged, and
// ERROR_INVALID_NAME for the name of one of the host's users.
DWORD AddUserShare(const Share& share, const std::string& hostPath);

DWORD RemoveUserShare(const std::string& name);

}  // namespace permora::host
