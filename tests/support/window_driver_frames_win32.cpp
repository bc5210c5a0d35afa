// WindowDriver's frames on the Win32 back end.
#include <algorithm>
#include <optional>

#include "framework/styles.h"
#include "framework/win32/text.h"
#include "tests/support/ui_backend.h"
#include "tests/support/window_driver_win32.h"

namespace permora::test {
namespace {

struct FoundEntry {
    HMENU menu = nullptr;
    UINT position = 0;
};

// A pop-up is filled when the system says that it opens.
std::optional<FoundEntry> FindEntry(HWND window, HMENU menu, unsigned int command) {
    const auto count = static_cast<UINT>(std::max(GetMenuItemCount(menu), 0));
    for (UINT position = 0; position < count; ++position) {
        HMENU below = GetSubMenu(menu, static_cast<int>(position));
        if (below == nullptr && GetMenuItemID(menu, static_cast<int>(position)) == command)
            return FoundEntry{menu, position};
        if (below == nullptr) continue;
        SendMessageW(window, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(below), MAKELPARAM(position, FALSE));
        if (const auto found = FindEntry(window, below, command)) return found;
    }
    return std::nullopt;
}

std::optional<FoundEntry> EntryOfBar(HWND window, unsigned int command) {
    const auto found = FindEntry(window, GetMenu(window), command);
    if (!found) ADD_FAILURE() << "no menu has command " << command;
    return found;
}

MENUITEMINFOW InfoOf(const FoundEntry& entry, std::wstring& text) {
    text.assign(200, L'\0');
    MENUITEMINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = MIIM_STATE | MIIM_STRING | MIIM_ID | MIIM_FTYPE;
    info.dwTypeData = text.data();
    info.cch = static_cast<UINT>(text.size());
    GetMenuItemInfoW(entry.menu, entry.position, TRUE, &info);
    text.resize(info.cch);
    return info;
}

bool IsSeparator(HMENU menu, UINT position) {
    std::wstring text;
    return (InfoOf({menu, position}, text).fType & MFT_SEPARATOR) != 0;
}

}  // namespace

// As the menu bar does it, but for the loop in which the user moves there.
void WindowDriver::ChooseMenu(unsigned int command) {
    if (!TakesInput(window)) return;
    const auto entry = EntryOfBar(window, command);
    if (!entry) return;
    std::wstring text;
    EXPECT_EQ(InfoOf(*entry, text).fState & MFS_GRAYED, 0U) << "command " << command;
    SendMessageW(window, WM_MENUSELECT, MAKEWPARAM(command, 0), reinterpret_cast<LPARAM>(entry->menu));
    SendMessageW(window, WM_MENUSELECT, MAKEWPARAM(0, 0xFFFF), 0);
    PostMessageW(window, WM_COMMAND, command, 0);
    ServeWaiting();
}

MenuEntry WindowDriver::ReadMenu(unsigned int command) {
    const auto entry = EntryOfBar(window, command);
    if (!entry) return {};
    std::wstring text;
    const MENUITEMINFOW info = InfoOf(*entry, text);
    return {win32::Utf8(text), (info.fState & MFS_GRAYED) == 0, (info.fState & MFS_CHECKED) != 0};
}

std::vector<unsigned int> WindowDriver::GreyedCommands() const {
    std::vector<unsigned int> greyed;
    HMENU menu = MenuOf(window);
    for (int position = 0; position < GetMenuItemCount(menu); ++position) {
        std::wstring text;
        const MENUITEMINFOW info = InfoOf({menu, static_cast<UINT>(position)}, text);
        const bool isCommand = (info.fType & MFT_SEPARATOR) == 0;
        if (isCommand && (info.fState & MFS_GRAYED) != 0) greyed.push_back(info.wID);
    }
    return greyed;
}

// By the arrow keys, which the menu's loop reads after this.
void ChooseCommand(HWND menuWindow, unsigned int command) {
    HMENU menu = MenuOf(menuWindow);
    const auto entry = command != 0 ? FindEntry(menuWindow, menu, command) : std::nullopt;
    if (!entry || entry->menu != menu) {
        EXPECT_EQ(command, 0U) << "the menu has no such command";
        EndMenu();
        return;
    }
    const auto press = [](WPARAM key) { PostMessageW(GetActiveWindow(), WM_KEYDOWN, key, 1); };
    for (UINT position = 0; position <= entry->position; ++position)
        if (!IsSeparator(menu, position)) press(VK_DOWN);
    press(VK_RETURN);
}

std::string WindowDriver::StatusText(int pane) const {
    HWND bar = FindWindowExW(window, nullptr, STATUSCLASSNAMEW, nullptr);
    const auto part = static_cast<WPARAM>(pane);
    if (bar == nullptr || pane < 0 || SendMessageW(bar, SB_GETPARTS, 0, 0) <= pane) {
        ADD_FAILURE() << "the status bar has no pane " << pane;
        return {};
    }
    std::wstring text(LOWORD(SendMessageW(bar, SB_GETTEXTLENGTHW, part, 0)) + 1U, L'\0');
    SendMessageW(bar, SB_GETTEXTW, part, reinterpret_cast<LPARAM>(text.data()));
    text.pop_back();
    return win32::Utf8(text);
}

// ---- Toolbars ----

std::optional<ToolButtonPlace> FindToolButton(HWND window, unsigned int command) {
    std::optional<ToolButtonPlace> found;
    for (HWND each : Descendants(window)) {
        if (win32::ClassOf(each) != TOOLBARCLASSNAMEW) continue;
        RECT place{};
        if (SendMessageW(each, TB_GETRECT, command, reinterpret_cast<LPARAM>(&place)) == 0) continue;
        found = {each, place};
    }
    return found;
}

}  // namespace permora::test
