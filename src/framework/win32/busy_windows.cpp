// Windows that are painted while the program works, but accept no input.
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
    const bool wasBusy = toolkit.isBusy;
    toolkit.isBusy = true;
    ::SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    while (!hasEnded()) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0)
            // A modal window that opens meanwhile has a loop of its own.
            if (!IsInput(message)) Win32Application::Dispatch(message);
    }
    toolkit.isBusy = wasBusy;
    if (!wasBusy) ::SetCursor(LoadCursorA(nullptr, IDC_ARROW));
}

namespace win32 {

bool ShowBusyCursor() {
    const Win32Application* toolkit = Win32Application::Current();
    if (toolkit == nullptr || !toolkit->isBusy || IsModalWindowOpen()) return false;
    ::SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    return true;
}

}  // namespace win32
}  // namespace permora
