// WorkerThread: a thread that works for a window; the window can wait for it.
#pragma once

#include <chrono>
#include <functional>
#include <future>

#include "platform/api/base.h"

namespace permora {

// User-interface thread only.
class WorkerThread {
  public:
    WorkerThread() = default;
    ~WorkerThread();  // waits
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    // Waits for earlier work, then runs `work` on a new thread. Returns 0, or a system error code when no
    // thread could be made; nothing runs then.
    DWORD Start(std::function<void()> work);

    // True when the work has returned or returns within `patience`, and when there is none.
    bool HasEnded(std::chrono::milliseconds patience);

    // Returns when the work has returned, at once when there is none. Calls of the work to windows run
    // meanwhile.
    void Wait();

  private:
    static DWORD WINAPI Work(LPVOID task);

    std::future<void> end;  // not valid: nothing to wait for
};

}  // namespace permora
