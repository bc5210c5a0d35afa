#include "platform/linux/base/system_objects.h"

#include "platform/api/errors.h"
#include "platform/api/threads.h"
#include "platform/linux/base/failure.h"

namespace permora::host {

HandleTable<SystemObject>& SystemObjects() {
    // Outlives every thread.
    static auto& objects = *new HandleTable<SystemObject>;
    return objects;
}

}  // namespace permora::host

BOOL WINAPI CloseHandle(HANDLE handle) {
    using namespace permora::host;
    return SystemObjects().Remove(handle) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}
