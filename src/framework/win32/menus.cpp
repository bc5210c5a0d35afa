#include "framework/win32/menus.h"

#include <utility>

#include "framework/frame_native.h"
#include "framework/win32/image.h"
#include "framework/win32/scale.h"
#include "framework/win32/text.h"

namespace permora {
namespace win32 {
namespace {

// Passes what a window gets about a menu to the menu, while that pops up.
class MenuWatch {
  public:
    MenuWatch(HWND window, SystemMenu& menu) : watched(window) {
        SetWindowSubclass(watched, Receive, kWatchId, reinterpret_cast<DWORD_PTR>(&menu));
    }
    ~MenuWatch() { RemoveWindowSubclass(watched, Receive, kWatchId); }
    MenuWatch(const MenuWatch&) = delete;
    MenuWatch& operator=(const MenuWatch&) = delete;

  private:
    static constexpr UINT_PTR kWatchId = 2;

    static LRESULT CALLBACK Receive(HWND window, UINT code, WPARAM wide, LPARAM wider, UINT_PTR /*id*/,
                                    DWORD_PTR menu) {
        if (reinterpret_cast<SystemMenu*>(menu)->Receive({code, wide, wider})) return 0;
        return DefSubclassProc(window, code, wide, wider);
    }

    HWND watched;
};

}  // namespace

SystemMenu::Pictures::~Pictures() {
    for (HBITMAP bitmap : bitmaps)
        DeleteObject(bitmap);
}

SystemMenu::SystemMenu(const std::shared_ptr<CMenu::Items>& items, MenuForm form, UINT resolution,
                       MenuHandlers given)
    : handlers(std::move(given)),
      dpi(resolution),
      menu(form == MenuForm::kBar ? CreateMenu() : CreatePopupMenu()) {
    popups[menu] = {items, nullptr};
    Fill(menu);
}

SystemMenu::~SystemMenu() {
    DestroyMenu(menu);
}

void SystemMenu::Empty(HMENU shown) {
    while (GetMenuItemCount(shown) > 0) {
        if (HMENU below = GetSubMenu(shown, 0); below != nullptr) {
            Empty(below);
            popups.erase(below);
        }
        DeleteMenu(shown, 0, MF_BYPOSITION);
    }
}

void SystemMenu::Fill(HMENU shown) {
    Empty(shown);
    const std::shared_ptr<CMenu::Items> items = popups.at(shown).items;
    auto pictures = std::make_unique<Pictures>();
    for (const MenuItem& item : items->entries)
        Add(shown, item, *pictures);
    popups.at(shown).pictures = std::move(pictures);
}

void SystemMenu::Add(HMENU shown, const MenuItem& item, Pictures& pictures) {
    std::wstring text = Wide(MenuLabel(item.text));
    MENUITEMINFOW entry{};
    entry.cbSize = sizeof entry;
    entry.fMask = MIIM_FTYPE | MIIM_ID | MIIM_STATE | MIIM_STRING;
    entry.fType =
        (item.IsSeparator() ? UINT{MFT_SEPARATOR} : 0U) | (item.isRadio ? UINT{MFT_RADIOCHECK} : 0U);
    entry.fState = (item.enabled ? 0U : UINT{MFS_GRAYED}) | (item.checked ? UINT{MFS_CHECKED} : 0U);
    entry.wID = item.id;
    entry.dwTypeData = text.data();
    if (item.popup != nullptr) {
        entry.fMask |= MIIM_SUBMENU;
        entry.hSubMenu = CreatePopupMenu();
        popups[entry.hSubMenu] = {item.popup, nullptr};
        Fill(entry.hSubMenu);
    }
    if (item.icon) {
        const Size size = SmallIconSize();
        entry.fMask |= MIIM_BITMAP;
        entry.hbmpItem = MakeMenuPicture(item.icon, {ToDevice(size.cx, dpi), ToDevice(size.cy, dpi)});
        pictures.bitmaps.push_back(entry.hbmpItem);
    }
    InsertMenuItemW(shown, static_cast<UINT>(GetMenuItemCount(shown)), TRUE, &entry);
}

bool SystemMenu::Receive(const Message& message) {
    if (message.code == WM_INITMENUPOPUP) {
        auto* shown = reinterpret_cast<HMENU>(message.wide);
        const auto found = popups.find(shown);
        if (found == popups.end()) return false;
        handlers.opening(*found->second.items);
        Fill(shown);
        return true;
    }
    if (message.code != WM_MENUSELECT) return false;
    // An entry of another menu, of the window's own say, is none of ours, and neither is a pop-up.
    constexpr UINT kNoCommand = MF_POPUP | MF_SEPARATOR;
    const UINT flags = HIWORD(message.wide);
    const bool isOurs = popups.contains(reinterpret_cast<HMENU>(message.wider));
    handlers.highlighted(isOurs && (flags & kNoCommand) == 0 ? LOWORD(message.wide) : 0U);
    return isOurs;
}

}  // namespace win32

unsigned int TrackNativeMenu(const CMenu& menu, Point screen, CWnd& owner,
                             const std::function<void(unsigned int id)>& highlight) {
    HWND top = GetAncestor(owner.GetSafeHwnd(), GA_ROOT);
    const UINT dpi = GetDpiForWindow(top);
    win32::SystemMenu shown(menu.Shared(), win32::MenuForm::kPopup, dpi,
                            {.opening = [](CMenu::Items&) {}, .highlighted = highlight});
    const win32::MenuWatch watch(top, shown);
    return static_cast<unsigned int>(TrackPopupMenuEx(shown.Handle(), TPM_RETURNCMD | TPM_RIGHTBUTTON,
                                                      win32::ToDevice(screen.x, dpi),
                                                      win32::ToDevice(screen.y, dpi), top, nullptr));
}

}  // namespace permora
