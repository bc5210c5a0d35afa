// Windows that are painted while the program works, but accept no input.
#include <optional>
#include <utility>

#include "framework/native.h"
#include "framework/win32/application.h"
#include "framework/win32/window.h"

namespace permora {
namespace {

bool IsInput(const MSG& message) {
    const auto isBetween = [&](UINT first, UINT last) {
        return message.message >= first && message.message <= last;
    };
    return isBetween(WM_KEYFIRST, WM_KEYLAST) || isBetween(WM_MOUSEFIRST, WM_MOUSELAST) ||
           isBetween(WM_NCLBUTTONDOWN, WM_NCXBUTTONDBLCLK) || message.message == WM_SYSCOMMAND ||
           message.message == WM_CLOSE;
}

}  // namespace

void ServeBusyWindowsUntil(const std::function<bool()>& hasEnded) {
    Win32Application& toolkit = *Win32Application::Current();
    const std::optional<int> before = std::exchange(toolkit.modalWhenBusy, toolkit.ModalCount());
    bool isToEnd = false;
    ::SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    while (!hasEnded()) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0)
            if (message.message == WM_QUIT)
                isToEnd = true;
            else if (!IsInput(message))  // a modal window that opens meanwhile has a loop of its own
                Win32Application::Dispatch(message);
    }
    toolkit.modalWhenBusy = before;
    if (!before) ::SetCursor(LoadCursorA(nullptr, IDC_ARROW));
    if (isToEnd) PostQuitMessage(0);  // for the loops around this one
}

void ServeWindowsUntil(const std::function<bool()>& hasEnded) {
    constexpr DWORD kPace = 5;  // milliseconds
    while (!hasEnded()) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE) != 0)
            if (!Win32Application::ServeMessage()) return;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, kPace, QS_ALLINPUT);
    }
}

namespace win32 {

bool ShowBusyCursor() {
    const Win32Application* toolkit = Win32Application::Current();
    if (toolkit == nullptr || !toolkit->modalWhenBusy) return false;
    if (toolkit->ModalCount() > *toolkit->modalWhenBusy) return false;  // one that opened meanwhile
    ::SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    return true;
}

}  // namespace win32
}  // namespace permora
