// Work on other threads that must not be cut off by the end of the process: a file that is being copied or
// overwritten.
#pragma once

#include <chrono>
#include <functional>

namespace permora {

// Exists while the work runs, on any thread.
class StoppableWork {
  public:
    // `stop` requests the work to return soon. It is called at most once, on another thread, while the object
    // exists, and must not wait.
    explicit StoppableWork(std::function<void()> stop);
    ~StoppableWork();
    StoppableWork(const StoppableWork&) = delete;
    StoppableWork& operator=(const StoppableWork&) = delete;

  private:
    std::function<void()> stopWork;
};

// Stops all running work and waits for its end, for `limit` at most. Any thread that does no such work
// itself. Calls of the work to the user-interface thread wait meanwhile.
void StopAllWork(std::chrono::milliseconds limit);

}  // namespace permora
