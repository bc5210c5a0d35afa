#include "platform/api/threads.h"

#include <memory>
#include <system_error>
#include <thread>

#include "platform/api/errors.h"
#include "platform/linux/base/handle_table.h"

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES /*attributes*/, SIZE_T /*stackSize*/,
                           LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD flags, LPDWORD threadId) {
    using namespace permora::host;
    if (start == nullptr || flags != 0 || threadId != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    try {
        std::thread(start, parameter).detach();
        return OpenHandles().Add(std::make_shared<SystemObject>());
    } catch (const std::system_error&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}
