// How services report a failure.
#pragma once

#include "platform/api/base.h"

namespace permora::host {

// Sets the last error and gives the FALSE that the service returns.
inline BOOL Fail(DWORD code) {
    SetLastError(code);
    return FALSE;
}

}  // namespace permora::host
