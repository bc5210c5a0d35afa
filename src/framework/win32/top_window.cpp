#include "framework/win32/top_window.h"

#include <string>

#include "framework/styles.h"
#include "framework/win32/image.h"
#include "framework/win32/text.h"
#include "framework/win32/window.h"

namespace permora::win32 {

TopWindow* TopWindow::Around(HWND window) {
    return dynamic_cast<TopWindow*>(MessageTarget::Of(GetAncestor(window, GA_ROOT)));
}

bool TopWindow::TakeActivation(bool isActive) {
    if (!isActive) {
        if (HWND focused = ::GetFocus(); IsChild(Top(), focused) != 0) keptFocus = focused;
        return false;
    }
    // The dialog manager would hide who has the keyboard from those who use the mouse.
    SendMessageW(Top(), WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
    const bool canTakeIt = IsChild(Top(), keptFocus) != 0 && IsWindowVisible(keptFocus) != 0 &&
                           ::IsWindowEnabled(keptFocus) != 0;
    if (canTakeIt) ::SetFocus(keptFocus);
    return !canTakeIt;
}

void TopWindow::FollowResolution(const RECT& suggested) const {
    const auto follow = [](HWND child, LPARAM) -> BOOL {
        if (MessageTarget* control = MessageTarget::Of(child)) control->OnOtherResolution();
        return TRUE;
    };
    EnumChildWindows(Top(), follow, 0);
    SetWindowPos(Top(), nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                 suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void TopWindow::ShowIcon(const CIcon& icon) {
    if (!icon) return;
    const UINT dpi = GetDpiForWindow(Top());
    const auto show = [&](WPARAM kind, int metric) {
        HICON picture = icon.Native()->For(GetSystemMetricsForDpi(metric, dpi)).icon;
        SendMessageW(Top(), WM_SETICON, kind, reinterpret_cast<LPARAM>(picture));
    };
    show(ICON_BIG, SM_CXICON);
    show(ICON_SMALL, SM_CXSMICON);
    shownIcon = icon;
}

HWND TopWindow::TipWindow() {
    if (tips == nullptr)
        tips = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, L"", WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP,
                               0, 0, 0, 0, Top(), nullptr, nullptr, nullptr);
    return tips;
}

// ---- For all windows ----

void GiveFocus(HWND window) {
    TopWindow* top = TopWindow::Around(window);
    if (top != nullptr && top->Top() != window) top->KeepFocus(window);
    if (top == nullptr || ::GetActiveWindow() == top->Top()) ::SetFocus(window);
}

void PassFocusOn(HWND window) {
    HWND focused = ::GetFocus();
    if (focused == nullptr || (focused != window && IsChild(window, focused) == 0)) return;
    TopWindow* top = TopWindow::Around(window);
    if (top == nullptr || top->Top() == window) return;
    HWND whole = top->Top();
    top->MoveFocus(1, window);
    // Where no control takes the keyboard, the window's keys stay.
    if (::GetFocus() == focused) ::SetFocus(whole);
}

void FocusMoved(HWND window) {
    if (TopWindow* top = TopWindow::Around(window)) top->OnFocusMoved();
}

void ShowTipFor(HWND control, const std::string& text) {
    TopWindow* top = TopWindow::Around(control);
    if (top == nullptr) return;
    std::wstring shown = Wide(text);
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = top->Top();
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    tool.lpszText = shown.data();
    SendMessageW(top->TipWindow(), TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    if (!text.empty()) SendMessageW(top->TipWindow(), TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

}  // namespace permora::win32
