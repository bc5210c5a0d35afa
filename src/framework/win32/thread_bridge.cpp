#include "framework/win32/thread_bridge.h"

#include <algorithm>
#include <utility>

namespace permora::win32 {
namespace {

constexpr UINT kWorkPosted = WM_APP;

}  // namespace

ThreadBridge::ThreadBridge()
    : window(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
    Adopt(window);
}

void ThreadBridge::Post(std::function<void()> work) {
    const std::lock_guard lock(mutex);
    posted.push_back(std::move(work));
    AskForTurn();
}

// With the lock held. One message at a time: one that the system has refused is made up for by the next.
void ThreadBridge::AskForTurn() {
    if (!isAwaited && !posted.empty()) isAwaited = PostMessageW(window, kWorkPosted, 0, 0) != 0;
}

void ThreadBridge::PostLater(int milliseconds, std::function<void()> work) {
    timers[++lastTimer] = std::move(work);
    SetTimer(window, lastTimer, static_cast<UINT>(std::max(milliseconds, 0)), nullptr);
}

void ThreadBridge::Serve() {
    while (RunNext()) {
    }
}

LRESULT ThreadBridge::OnMessage(const Message& message) {
    switch (message.code) {
        case kWorkPosted: {
            const std::lock_guard lock(mutex);
            isAwaited = false;
        }
            RunNext();
            return 0;
        case WM_TIMER:
            RunTimer(message.wide);
            return 0;
        default:
            return Default(message);
    }
}

bool ThreadBridge::RunNext() {
    std::function<void()> work;
    {
        const std::lock_guard lock(mutex);
        if (posted.empty()) return false;
        work = std::move(posted.front());
        posted.pop_front();
        AskForTurn();  // the piece may have a loop of its own, which serves the others
    }
    work();
    return true;
}

void ThreadBridge::RunTimer(UINT_PTR id) {
    KillTimer(window, id);
    const auto timer = timers.extract(id);
    if (!timer.empty()) timer.mapped()();
}

}  // namespace permora::win32
