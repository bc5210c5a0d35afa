// The toolkit of the process: exactly one, made on the thread that becomes the user-interface thread.
#pragma once

#include <optional>
#include <vector>

#include "framework/images.h"
#include "framework/win32/message_box.h"
#include "framework/win32/thread_bridge.h"

namespace permora {

namespace win32 {
class FrameWindow;
}

class Win32Application {
  public:
    Win32Application();
    ~Win32Application();
    Win32Application(const Win32Application&) = delete;
    Win32Application& operator=(const Win32Application&) = delete;

    // Serves messages until StopToolkit. Returns the exit code of the process.
    int Run();

    // Null while there is none. Any thread.
    static Win32Application* Current();

    // Waits for a message and gives it to its window, or to the rules of the dialog's keyboard that it
    // belongs to. False when the program is to end.
    static bool ServeMessage();
    static void Dispatch(const MSG& message);
    // No message is waiting: frames bring up to date what follows the program's state.
    void Idle() const;

    // Serves the user-interface thread. Any thread.
    win32::ThreadBridge& Bridge() { return bridge; }
    bool IsOnUiThread() const { return uiThread == GetCurrentThreadId(); }

    // The modal windows of the framework, the one that takes input last. User-interface thread.
    std::vector<HWND> modalWindows;
    // Windows that take input beside them.
    std::vector<HWND> besideWindows;
    std::vector<win32::FrameWindow*> frames;
    CIcon programIcon;  // of windows that have no other
    // What ModalCount was when ServeBusyWindowsUntil began; nothing while the windows are not busy.
    std::optional<int> modalWhenBusy;
    win32::MessageBoxRules boxes;
    int openChoosers = 0;  // the system's dialogs for choosing files
    int ModalCount() const {
        return static_cast<int>(modalWindows.size()) + boxes.OpenBoxes() + openChoosers;
    }

  private:
    DWORD uiThread = GetCurrentThreadId();
    win32::ThreadBridge bridge;
};

}  // namespace permora
