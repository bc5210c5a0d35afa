// WorkerThread: a thread that works for a window, and that the window can wait for.
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

    // Runs `work` on a new thread, after waiting for the one before. 0, or a system error code when there is
    // no thread: then nothing runs.
    DWORD Start(std::function<void()> work);

    // Whether the work has returned, or does within `patience`; true when there is none.
    bool HasEnded(std::chrono::milliseconds patience);

    // Returns when the work has returned, at once when there is none. What the work asks of windows meanwhile
    // is served.
    void Wait();

  private:
    static DWORD WINAPI Work(LPVOID task);

    std::future<void> end;  // not valid: nothing to wait for
};

}  // namespace permora
