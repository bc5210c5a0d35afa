// The toolkit's services for the driver of user interface tests, beside WindowDriver.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/api/base.h"

namespace permora::test {

enum class ModalKind { kDialog, kSheet, kMessageBox, kMenu };

// A window that waits for the user and holds the program up.
struct ModalWindow {
    HWND window = nullptr;
    ModalKind kind = ModalKind::kDialog;
    unsigned int templateId = 0;  // kDialog
    std::string title;            // a message box's caption
    std::string text;             // kMessageBox
    UINT type = 0;                // kMessageBox: MB_ buttons and icon
};

// Calls `shown` on the user-interface thread for every modal window that is about to be shown; null ends it.
void WatchModalWindows(std::function<void(const ModalWindow&)> shown);

bool IsOpen(HWND window);
// Serves events until `window` takes input; false when it closes instead.
bool WaitForInput(HWND window);
// False when `condition` does not hold in time.
bool ServeEventsUntil(const std::function<bool()>& condition);
// The windows that can be seen: all, and those that hold nothing up.
std::vector<HWND> OpenWindows();
std::vector<HWND> OpenFrames();

void ChooseButton(HWND messageBox, int buttonId);
void ChooseCommand(HWND menu, unsigned int command);
// Asks a modal window to go in the way that changes least: as Escape does.
void CloseSafely(HWND window);
// Asks all windows to close, the topmost first, until one refuses: as the desktop does when the session ends.
void CloseAllWindows();

}  // namespace permora::test
