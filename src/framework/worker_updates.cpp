#include "framework/worker_updates.h"

#include <chrono>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "framework/native.h"
#include "framework/window_access.h"

namespace permora {
namespace {

using Clock = std::chrono::steady_clock;

// Displays paint about sixty times a second. More would not be seen.
constexpr std::chrono::milliseconds kPaintInterval{16};

struct Update {
    std::optional<std::string> text;
    bool redraw = false;
    std::function<void()> work;
};

struct Queue {
    std::mutex mutex;
    std::unordered_map<const CWnd*, Update> updates;
    bool isFlushDue = false;
    Clock::time_point lastFlush;  // of the user-interface thread alone
};

// Outlives every window, also global ones.
Queue& TheQueue() {
    static auto& queue = *new Queue;
    return queue;
}

void Apply(const CWnd& window, const Update& update) {
    NativeWindow* native = WindowAccess::Native(window);
    if (native == nullptr) return;
    if (update.text) native->SetText(*update.text);
    if (update.redraw) native->Invalidate();
    if (update.work) update.work();  // last, since it may destroy the window
}

// Applies the waiting updates. One window at a time, since a change may run code that destroys another.
void Flush() {
    Queue& queue = TheQueue();
    std::unique_lock lock(queue.mutex);
    queue.isFlushDue = false;
    for (std::size_t count = queue.updates.size(); count > 0 && !queue.updates.empty(); --count) {
        const auto node = queue.updates.extract(queue.updates.begin());
        lock.unlock();
        Apply(*node.key(), node.mapped());
        lock.lock();
    }
}

void FlushAtDisplayPace() {
    Clock::time_point& lastFlush = TheQueue().lastFlush;
    const auto sinceLast = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lastFlush);
    if (sinceLast < kPaintInterval) {
        PostLater(static_cast<int>((kPaintInterval - sinceLast).count()), FlushAtDisplayPace);
        return;
    }
    Flush();
    lastFlush = Clock::now();
}

// Called with the queue locked.
void RequestFlush(Queue& queue, std::unique_lock<std::mutex>& lock) {
    if (queue.isFlushDue) return;
    queue.isFlushDue = true;
    lock.unlock();
    PostToUiThread(FlushAtDisplayPace);
}

}  // namespace

void QueueText(CWnd& window, const std::string& text) {
    Queue& queue = TheQueue();
    std::unique_lock lock(queue.mutex);
    queue.updates[&window].text = text;
    RequestFlush(queue, lock);
}

void QueueRedraw(CWnd& window) {
    Queue& queue = TheQueue();
    std::unique_lock lock(queue.mutex);
    queue.updates[&window].redraw = true;
    RequestFlush(queue, lock);
}

void QueueWork(CWnd& window, std::function<void()> work) {
    Queue& queue = TheQueue();
    std::unique_lock lock(queue.mutex);
    queue.updates[&window].work = std::move(work);
    RequestFlush(queue, lock);
}

std::optional<std::string> QueuedText(const CWnd& window) {
    Queue& queue = TheQueue();
    const std::lock_guard lock(queue.mutex);
    const auto found = queue.updates.find(&window);
    return found != queue.updates.end() ? found->second.text : std::nullopt;
}

void ForgetQueuedText(const CWnd& window) {
    Queue& queue = TheQueue();
    const std::lock_guard lock(queue.mutex);
    if (const auto found = queue.updates.find(&window); found != queue.updates.end())
        found->second.text.reset();
}

void ForgetQueued(const CWnd& window) {
    Queue& queue = TheQueue();
    const std::lock_guard lock(queue.mutex);
    queue.updates.erase(&window);
}

}  // namespace permora
