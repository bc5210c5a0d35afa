#include "platform/api/threads.h"

#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/base/system_objects.h"

namespace permora::host {
namespace {

// The thread runs on when its handle is closed.
class Thread : public SystemObject {
  public:
    explicit Thread(std::thread started) : thread(std::move(started)) {}
    ~Thread() override { thread.detach(); }
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

  private:
    std::thread thread;
};

}  // namespace
}  // namespace permora::host

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES /*attributes*/, SIZE_T /*stackSize*/,
                           LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD flags, LPDWORD threadId) {
    using namespace permora::host;
    if (start == nullptr || flags != 0 || threadId != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    try {
        return SystemObjects().Add(std::make_shared<Thread>(std::thread(start, parameter)));
    } catch (const std::system_error&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}
