#include "platform/api/errors.h"
#include "platform/api/system.h"
#include "platform/linux/base/failure.h"

BOOL WINAPI GetVersionExA(OSVERSIONINFOA* version) {
    if (version->dwOSVersionInfoSize != sizeof *version)
        return permora::host::Fail(ERROR_INSUFFICIENT_BUFFER);
    *version = {sizeof *version, 10, 0, 0, VER_PLATFORM_WIN32_NT, {}};
    return TRUE;
}
