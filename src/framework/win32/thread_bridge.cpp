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
    {
        const std::lock_guard lock(mutex);
        posted.push_back(std::move(work));
    }
    PostMessageW(window, kWorkPosted, 0, 0);
}

void ThreadBridge::PostLater(int milliseconds, std::function<void()> work) {
    timers[++lastTimer] = std::move(work);
    SetTimer(window, lastTimer, static_cast<UINT>(std::max(milliseconds, 0)), nullptr);
}

void ThreadBridge::Serve() {
    MSG message;
    while (PeekMessageW(&message, window, kWorkPosted, kWorkPosted, PM_REMOVE) != 0)
        RunNext();
}

LRESULT ThreadBridge::OnMessage(const Message& message) {
    switch (message.code) {
        case kWorkPosted:
            RunNext();
            return 0;
        case WM_TIMER:
            RunTimer(message.wide);
            return 0;
        default:
            return Default(message);
    }
}

void ThreadBridge::RunNext() {
    std::function<void()> work;
    {
        const std::lock_guard lock(mutex);
        if (posted.empty()) return;
        work = std::move(posted.front());
        posted.pop_front();
    }
    work();
}

void ThreadBridge::RunTimer(UINT_PTR id) {
    KillTimer(window, id);
    const auto timer = timers.extract(id);
    if (!timer.empty()) timer.mapped()();
}

}  // namespace permora::win32
