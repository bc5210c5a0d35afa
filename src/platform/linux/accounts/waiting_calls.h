// Calls that may block for minutes, for callers who cannot wait that long. They run on threads of their own;
// one that blocks keeps its thread, and nothing else waits for it, the end of the process least of all.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace permora::host {

using SteadyClock = std::chrono::steady_clock;

// How long a caller waits.
struct Patience {
    SteadyClock::time_point until;
    const std::atomic<bool>* isStopped = nullptr;  // looked at several times a second; null: nobody stops it

    static Patience For(std::chrono::milliseconds time) { return {SteadyClock::now() + time, nullptr}; }
    bool IsOver() const { return SteadyClock::now() >= until || (isStopped != nullptr && isStopped->load()); }
};

// Runs the task on a thread, in the order of these calls. The task owns all that it touches, since nobody may
// be there any more when it ends. Several tasks run at once; while all threads are blocked the next ones
// wait. False when the system starts no thread.
bool RunInBackground(std::function<void()> task);

// What `call` returns, or nothing when it does not in time: it then runs on, and its result is dropped.
template <class Result>
std::optional<Result> CallWithin(const Patience& patience, std::function<Result()> call) {
    constexpr std::chrono::milliseconds kSlice{50};
    struct Shared {
        std::mutex mutex;
        std::condition_variable isDone;
        std::optional<Result> result;
    };
    const auto shared = std::make_shared<Shared>();
    const bool isStarted = RunInBackground([shared, call = std::move(call)] {
        Result result = call();
        const std::lock_guard lock(shared->mutex);
        shared->result = std::move(result);
        shared->isDone.notify_all();
    });
    std::unique_lock lock(shared->mutex);
    while (isStarted && !shared->result && !patience.IsOver())
        shared->isDone.wait_until(lock, std::min(patience.until, SteadyClock::now() + kSlice));
    return std::move(shared->result);
}

}  // namespace permora::host
