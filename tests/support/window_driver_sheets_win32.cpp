// WindowDriver's sheets on the Win32 back end.
#include <algorithm>

#include "framework/styles.h"
#include "framework/win32/text.h"
#include "tests/support/window_driver_win32.h"

namespace permora::test {
namespace {

// The control with the tabs; null, and a failure of the test, when there is none.
HWND TabsOf(HWND window) {
    HWND tabs = FindWindowExW(window, nullptr, WC_TABCONTROLW, nullptr);
    EXPECT_NE(tabs, nullptr) << "no tabs";
    return tabs;
}

}  // namespace

std::vector<std::string> WindowDriver::Tabs() const {
    std::vector<std::string> captions;
    HWND tabs = TabsOf(window);
    const auto count = static_cast<WPARAM>(SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0));
    for (WPARAM tab = 0; tab < count; ++tab) {
        wchar_t text[100] = L"";
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = 100;
        SendMessageW(tabs, TCM_GETITEMW, tab, reinterpret_cast<LPARAM>(&item));
        captions.push_back(win32::Utf8(item.pszText));
    }
    return captions;
}

std::string WindowDriver::ActiveTab() const {
    const auto tab = SendMessageW(TabsOf(window), TCM_GETCURSEL, 0, 0);
    return tab >= 0 ? Tabs()[static_cast<std::size_t>(tab)] : std::string();
}

void WindowDriver::SwitchToTab(const std::string& caption) {
    const std::vector<std::string> captions = Tabs();
    const auto tab = std::ranges::find(captions, caption);
    ASSERT_NE(tab, captions.end()) << "no tab " << caption;
    RECT place{};
    SendMessageW(TabsOf(window), TCM_GETITEMRECT, static_cast<WPARAM>(tab - captions.begin()),
                 reinterpret_cast<LPARAM>(&place));
    ClickWindow(TabsOf(window), {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
}

}  // namespace permora::test
