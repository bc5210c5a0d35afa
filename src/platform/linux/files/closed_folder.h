// A folder that a walk has closed for the time being, and the way back to it.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/base/unique_fd.h"

namespace permora::host {

class ClosedFolder {
  public:
    // Remembers an open folder, which may be closed then. `isInView` tells whether it was reached through
    // OpenWithoutDevices. Nothing when the kernel does not tell which folder it is.
    static std::optional<ClosedFolder> Of(int folder, bool isInView);

    // Opens it again from an open folder that is in it, with `flags` of open(2) (O_RDONLY, O_PATH).
    // ERROR_FILE_INVALID when it is not found from there since one of them was moved.
    DWORD Open(int below, int flags, UniqueFd& opened) const;

  private:
    dev_t device = 0;
    ino_t inode = 0;
    std::vector<std::byte> key;  // of name_to_handle_at(2), in a view alone; empty: none
};

}  // namespace permora::host
