#include "framework/win32/others_disabled.h"

#include <algorithm>

#include "framework/win32/application.h"

namespace permora::win32 {
namespace {

bool Owns(HWND window, HWND owned) {
    HWND owner = GetWindow(owned, GW_OWNER);
    while (owner != nullptr && owner != window)
        owner = GetWindow(owner, GW_OWNER);
    return owner != nullptr;
}

}  // namespace

OthersDisabled::OthersDisabled(HWND window) : shown(window) {
    EnumThreadWindows(GetCurrentThreadId(), Take, reinterpret_cast<LPARAM>(this));
    for (HWND each : disabled)
        ::EnableWindow(each, FALSE);
}

OthersDisabled::~OthersDisabled() {
    for (HWND each : disabled)
        if (IsWindow(each) != 0) ::EnableWindow(each, TRUE);
}

BOOL CALLBACK OthersDisabled::Take(HWND window, LPARAM self) {
    auto& all = *reinterpret_cast<OthersDisabled*>(self);
    const auto& beside = Win32Application::Current()->besideWindows;
    const bool isExempt = std::ranges::find(beside, window) != beside.end() && !Owns(window, all.shown);
    if (window != all.shown && !isExempt && ::IsWindowEnabled(window) != 0 && IsWindowVisible(window) != 0)
        all.disabled.push_back(window);
    return TRUE;
}

}  // namespace permora::win32
