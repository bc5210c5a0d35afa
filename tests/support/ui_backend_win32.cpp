// Watches modal windows of the Win32 back end, and starts the toolkit for all tests of a program.
#include "tests/support/ui_backend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

#include "framework/win32/application.h"
#include "framework/win32/dialog_window.h"
#include "framework/win32/text.h"
#include "platform/api/messages.h"
#include "tests/support/patience.h"
#include "tests/support/window_driver_win32.h"

namespace permora::test {
namespace {

using win32::ClassOf;
using win32::DialogWindow;
using win32::TextOf;
using win32::Utf8;

class Toolkit : public ::testing::Environment {
  public:
    void SetUp() override { application = std::make_unique<Win32Application>(); }
    void TearDown() override { application.reset(); }

  private:
    std::unique_ptr<Win32Application> application;
};

[[maybe_unused]] const ::testing::Environment* const kToolkit =
    ::testing::AddGlobalTestEnvironment(new Toolkit);

constexpr int kBoxTextId = 0xFFFF;  // of a message box's text

constexpr UINT kGetMenu = 0x01E1;  // MN_GETHMENU

bool IsMenu(HWND window) {
    return ClassOf(window) == L"#32768";
}

bool IsMessageBox(HWND window) {
    return ClassOf(window) == L"#32770";
}

// The first static control of a message box that shows an icon; null without one.
HICON IconOf(HWND box) {
    HICON icon = nullptr;
    for (HWND child = GetWindow(box, GW_CHILD); child != nullptr && icon == nullptr;
         child = GetWindow(child, GW_HWNDNEXT))
        if (ClassOf(child) == L"Static")
            icon = reinterpret_cast<HICON>(SendMessageW(child, STM_GETICON, 0, 0));
    return icon;
}

UINT TypeOf(HWND box) {
    UINT type = MB_OK;
    if (GetDlgItem(box, IDYES) != nullptr)
        type = GetDlgItem(box, IDCANCEL) != nullptr ? MB_YESNOCANCEL : MB_YESNO;
    struct BoxIcon {
        const char* resource;
        UINT bit;
    };
    for (const BoxIcon& each :
         {BoxIcon{IDI_ERROR, MB_ICONERROR}, BoxIcon{IDI_QUESTION, MB_ICONQUESTION},
          BoxIcon{IDI_WARNING, MB_ICONWARNING}, BoxIcon{IDI_INFORMATION, MB_ICONINFORMATION}})
        if (IconOf(box) == LoadIconA(nullptr, each.resource)) return type | each.bit;
    return type;
}

ModalWindow InfoOf(HWND window) {
    ModalWindow info;
    info.window = window;
    info.title = Utf8(TextOf(window));
    if (IsMessageBox(window)) {
        info.kind = ModalKind::kMessageBox;
        info.text = Utf8(TextOf(GetDlgItem(window, kBoxTextId)));
        info.type = TypeOf(window);
        return info;
    }
    info.templateId = DialogWindow::Around(window)->TemplateId();
    info.kind = info.templateId != 0 ? ModalKind::kDialog : ModalKind::kSheet;
    return info;
}

// A menu has opened and waits for the user.
bool IsMenuShown(const CWPRETSTRUCT& sent) {
    return sent.message == WM_ENTERIDLE && sent.wParam == MSGF_MENU &&
           IsMenu(reinterpret_cast<HWND>(sent.lParam));
}

std::function<void(const ModalWindow&)> theWatcher;
HHOOK theHook = nullptr;

// A modal window is shown for the first time.
LRESULT CALLBACK OnSentMessage(int code, WPARAM wide, LPARAM details) {
    const auto& sent = *reinterpret_cast<const CWPRETSTRUCT*>(details);
    const bool isShown = code >= 0 && sent.message == WM_SHOWWINDOW && sent.wParam != 0;
    if (isShown && theWatcher && (IsMessageBox(sent.hwnd) || DialogWindow::Around(sent.hwnd) != nullptr) &&
        GetAncestor(sent.hwnd, GA_ROOT) == sent.hwnd)
        theWatcher(InfoOf(sent.hwnd));
    if (code >= 0 && theWatcher && IsMenuShown(sent)) {
        ModalWindow menu;
        menu.window = reinterpret_cast<HWND>(sent.lParam);
        menu.kind = ModalKind::kMenu;
        theWatcher(menu);
    }
    return CallNextHookEx(nullptr, code, wide, details);
}

BOOL CALLBACK TakeVisible(HWND window, LPARAM windows) {
    const bool isOurs = IsMessageBox(window) || win32::MessageTarget::Of(window) != nullptr;
    if (IsWindowVisible(window) != 0 && isOurs)
        reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

}  // namespace

void WatchModalWindows(std::function<void(const ModalWindow&)> shown) {
    theWatcher = std::move(shown);
    if (theHook != nullptr) UnhookWindowsHookEx(theHook);
    theHook = theWatcher ? SetWindowsHookExW(WH_CALLWNDPROCRET, OnSentMessage, nullptr, GetCurrentThreadId())
                         : nullptr;
}

bool IsOpen(HWND window) {
    return IsWindowVisible(window) != 0;
}

HMENU MenuOf(HWND window) {
    return IsMenu(window) ? reinterpret_cast<HMENU>(SendMessageW(window, kGetMenu, 0, 0)) : nullptr;
}

bool WaitForInput(HWND window) {
    if (IsMenu(window)) return IsOpen(window);
    return ServeEventsUntil([window] { return !IsOpen(window) || GetActiveWindow() == window; }) &&
           IsOpen(window);
}

void ServeWaiting() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        HWND top = GetAncestor(message.hwnd, GA_ROOT);
        MSG own = message;
        if (top == nullptr || !IsMessageBox(top) || IsDialogMessageW(top, &own) == 0)
            Win32Application::Dispatch(message);
    }
}

bool ServeEventsUntil(const std::function<bool()>& condition) {
    constexpr DWORD kPause = 5;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        ServeWaiting();
        Win32Application::Current()->Idle();
        MsgWaitForMultipleObjects(0, nullptr, FALSE, kPause, QS_ALLINPUT);
    }
    return true;
}

std::vector<HWND> OpenWindows() {
    std::vector<HWND> windows;
    EnumThreadWindows(GetCurrentThreadId(), TakeVisible, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

std::vector<HWND> OpenFrames() {
    std::vector<HWND> windows = OpenWindows();
    const std::vector<HWND>& modal = Win32Application::Current()->modalWindows;
    std::erase_if(windows, [&](HWND window) {
        return IsMessageBox(window) || std::ranges::find(modal, window) != modal.end();
    });
    return windows;
}

void ChooseButton(HWND messageBox, int buttonId) {
    HWND button = GetDlgItem(messageBox, buttonId);
    if (button == nullptr) {
        ADD_FAILURE() << "the message box has no button " << buttonId;
        CloseSafely(messageBox);
        return;
    }
    RECT client{};
    GetClientRect(button, &client);
    ClickWindow(button, {client.right / 2, client.bottom / 2});
}

void CloseSafely(HWND window) {
    if (!IsOpen(window)) return;
    if (IsMenu(window)) {
        EndMenu();
        return;
    }
    PostMessageW(window, IsMessageBox(window) ? WM_COMMAND : WM_CLOSE, IsMessageBox(window) ? IDCANCEL : 0,
                 0);
    ServeWaiting();
}

}  // namespace permora::test
