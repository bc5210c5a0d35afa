// Whether the user was told that rights are missing, for a window that offers a way to have them.
#pragma once

#include <atomic>

#include "platform/api/errors.h"

namespace permora {

// Of the process: whoever tells the user of a failure knows of no such window. Any thread.
inline constinit std::atomic<bool> hasMissedRights = false;

// For whoever tells the user of a failure with this code.
inline void NoteFailure(DWORD code) {
    if (code == ERROR_ACCESS_DENIED) hasMissedRights = true;
}

}  // namespace permora
