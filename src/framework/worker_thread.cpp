#include "framework/worker_thread.h"

#include <memory>
#include <utility>

#include "framework/native.h"
#include "platform/api/errors.h"
#include "platform/api/threads.h"
#include "platform/resources.h"

namespace permora {
namespace {

using Task = std::packaged_task<void()>;

constexpr SIZE_T kStackBytes = 4096;
constexpr std::chrono::milliseconds kServeInterval{5};

}  // namespace

WorkerThread::~WorkerThread() {
    Wait();
}

DWORD WorkerThread::Start(std::function<void()> work) {
    Wait();
    // An exception ends the program, as on any thread. If the future kept it, a window would wait for ever
    // for unfinished work.
    auto task = std::make_unique<Task>([work = std::move(work)]() noexcept { work(); });
    std::future<void> taskEnd = task->get_future();
    SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, TRUE};
    // Closed at once: the future signals the end.
    const UniqueHandle thread(CreateThread(&attributes, kStackBytes, Work, task.get(), 0, nullptr));
    if (!thread) return GetLastError();
    static_cast<void>(task.release());  // the thread's now
    end = std::move(taskEnd);
    return ERROR_SUCCESS;
}

bool WorkerThread::HasEnded(std::chrono::milliseconds patience) {
    if (!end.valid()) return true;
    if (end.wait_for(patience) != std::future_status::ready) return false;
    end = {};
    return true;
}

void WorkerThread::Wait() {
    while (!HasEnded(kServeInterval))
        ServeWorkers();
}

DWORD WINAPI WorkerThread::Work(LPVOID task) {
    const std::unique_ptr<Task> own(static_cast<Task*>(task));
    (*own)();
    return 0;
}

}  // namespace permora
