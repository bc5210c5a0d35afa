#include "framework/stoppable_work.h"

#include <condition_variable>
#include <mutex>
#include <set>
#include <utility>

namespace permora {
namespace {

struct RunningWork {
    std::mutex mutex;
    std::condition_variable ended;
    std::set<const std::function<void()>*> stops;
};

// Outlives every thread.
RunningWork& TheRunningWork() {
    static auto& running = *new RunningWork;
    return running;
}

}  // namespace

StoppableWork::StoppableWork(std::function<void()> stop) : stopWork(std::move(stop)) {
    RunningWork& running = TheRunningWork();
    const std::lock_guard lock(running.mutex);
    running.stops.insert(&stopWork);
}

StoppableWork::~StoppableWork() {
    RunningWork& running = TheRunningWork();
    const std::lock_guard lock(running.mutex);
    running.stops.erase(&stopWork);
    running.ended.notify_all();
}

void StopAllWork(std::chrono::milliseconds limit) {
    RunningWork& running = TheRunningWork();
    std::unique_lock lock(running.mutex);
    for (const std::function<void()>* stop : running.stops)
        (*stop)();
    running.ended.wait_for(lock, limit, [&running] { return running.stops.empty(); });
}

}  // namespace permora
