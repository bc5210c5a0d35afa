// Volumes that go away in the middle.
#pragma once

#include "platform/api/errors.h"

namespace permora {

// Whether an error says that the whole volume is out of reach: the server that shares it, or the program
// behind it. Each further object may then take as long to fail as the first, so a walk ends there.
inline bool IsVolumeLost(DWORD error) {
    switch (error) {
        case ERROR_HOST_DOWN:
        case ERROR_HOST_UNREACHABLE:
        case ERROR_NETWORK_UNREACHABLE:
        case ERROR_CONNECTION_REFUSED:
        case ERROR_NETNAME_DELETED:
        case ERROR_DEVICE_NOT_CONNECTED:
        case ERROR_BAD_NETPATH:
        case ERROR_TIMEOUT:
            return true;
        default:
            return false;
    }
}

}  // namespace permora
