#include "platform/linux/base/handle_table.h"

#include "platform/api/errors.h"
#include "platform/api/threads.h"
#include "platform/linux/base/failure.h"

namespace permora::host {

HandleTable& OpenHandles() {
    // Outlives every thread.
    static auto& handles = *new HandleTable;
    return handles;
}

}  // namespace permora::host

BOOL WINAPI CloseHandle(HANDLE handle) {
    using namespace permora::host;
    return OpenHandles().Remove<SystemObject>(handle) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}
