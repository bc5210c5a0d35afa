#include "framework/win32/top_window.h"

#include <dwmapi.h>

#include <string>

#include "framework/styles.h"
#include "framework/win32/image.h"
#include "framework/win32/text.h"
#include "framework/win32/window.h"

namespace permora::win32 {
namespace {

bool IsDesktopDark() {
    constexpr const wchar_t* kKey = LR"(Software\Microsoft\Windows\CurrentVersion\Themes\Personalize)";
    DWORD isLight = 1;
    DWORD size = sizeof isLight;
    RegGetValueW(HKEY_CURRENT_USER, kKey, L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &isLight, &size);
    return isLight == 0;
}

// As other programs' title bars are. The desktop itself sees to those of high contrast.
void ShowTitleBar(HWND window) {
    constexpr DWORD kUseDarkMode = 20;  // DWMWA_USE_IMMERSIVE_DARK_MODE
    const BOOL isDark = IsDesktopDark() ? TRUE : FALSE;
    DwmSetWindowAttribute(window, kUseDarkMode, &isDark, sizeof isDark);
}

template <class Action>
void ForAllBelow(HWND window, Action action) {
    const auto call = [](HWND child, LPARAM given) -> BOOL {
        (*reinterpret_cast<Action*>(given))(child);
        return TRUE;
    };
    EnumChildWindows(window, call, reinterpret_cast<LPARAM>(&action));
}

}  // namespace

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

void TopWindow::Dress(const CIcon& icon) {
    ShowTitleBar(Top());
    ShowIcon(icon);
}

bool TopWindow::FollowDesktop(const Message& message) const {
    switch (message.code) {
        case WM_DPICHANGED:
            FollowResolution(*reinterpret_cast<const RECT*>(message.wider));
            return true;
        case WM_SYSCOLORCHANGE:
            // The system tells top-level windows alone.
            ForAllBelow(Top(), [](HWND child) { SendMessageW(child, WM_SYSCOLORCHANGE, 0, 0); });
            return false;
        case WM_SETTINGCHANGE:
            ShowTitleBar(Top());
            return false;
        default:
            return false;
    }
}

void TopWindow::FollowResolution(const RECT& suggested) const {
    ForAllBelow(Top(), [](HWND child) {
        if (MessageTarget* control = MessageTarget::Of(child)) control->OnOtherResolution();
    });
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
