#include "tests/support/refused_threads.h"

#include "platform/api/errors.h"
#include "platform/api/threads.h"

namespace permora::test {

bool areThreadsRefused = false;

}  // namespace permora::test

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

HANDLE __real_CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD flags, LPDWORD threadId);
HANDLE __wrap_CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD flags, LPDWORD threadId) {
    if (!permora::test::areThreadsRefused)
        return __real_CreateThread(attributes, stackSize, start, parameter, flags, threadId);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
