#include "platform/linux/accounts/waiting_calls.h"

#include <cstddef>
#include <deque>
#include <system_error>
#include <thread>

namespace permora::host {

namespace {

class Threads {
  public:
    bool Take(std::function<void()> task) {
        const std::lock_guard lock(mutex);
        if (idle <= tasks.size() && count < kMost && Start()) ++count;
        if (count == 0) return false;
        tasks.push_back(std::move(task));
        hasTask.notify_one();
        return true;
    }

  private:
    // Enough for a few that are blocked and the ones that find out whether they still would be.
    static constexpr std::size_t kMost = 8;

    bool Start() {
        try {
            std::thread([this] { Work(); }).detach();
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    }

    void Work() {
        std::unique_lock lock(mutex);
        for (;;) {
            ++idle;
            hasTask.wait(lock, [this] { return !tasks.empty(); });
            --idle;
            std::function<void()> task = std::move(tasks.front());
            tasks.pop_front();
            lock.unlock();
            task();
            task = nullptr;
            lock.lock();
        }
    }

    std::mutex mutex;
    std::condition_variable hasTask;
    std::deque<std::function<void()>> tasks;
    std::size_t count = 0;
    std::size_t idle = 0;  // threads that wait for a task
};

// Never destroyed: its threads may outlive everything else.
Threads& AllThreads() {
    static Threads& threads = *new Threads;
    return threads;
}

}  // namespace

bool RunInBackground(std::function<void()> task) {
    return AllThreads().Take(std::move(task));
}

}  // namespace permora::host
