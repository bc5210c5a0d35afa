// Work on other threads that would leave something half done if the process just went: a file that is being
// copied, one that is being overwritten.
#pragma once

#include <chrono>
#include <functional>

namespace permora {

// Stands, on any thread, as long as the work runs.
class StoppableWork {
  public:
    // `stop` asks the work to return soon. Called on another thread, once at most, while the object stands;
    // it must not wait.
    explicit StoppableWork(std::function<void()> stop);
    ~StoppableWork();
    StoppableWork(const StoppableWork&) = delete;
    StoppableWork& operator=(const StoppableWork&) = delete;

  private:
    std::function<void()> stopWork;
};

// Asks all work that stands to stop and waits until it has ended, `limit` at most. Any thread that does not
// work itself; what the work asks of windows is not served meanwhile.
void StopAllWork(std::chrono::milliseconds limit);

}  // namespace permora
