// The system's menus, which show the shared half's.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "framework/menu_items.h"
#include "framework/win32/message_target.h"

namespace permora::win32 {

struct MenuHandlers {
    std::function<void(CMenu::Items&)> opening;     // before a pop-up is shown; may change the entries
    std::function<void(unsigned int)> highlighted;  // 0: none, or a pop-up
};

enum class MenuForm { kBar, kPopup };

// A menu with its pop-ups, each of which is filled anew when it opens.
class SystemMenu {
  public:
    SystemMenu(const std::shared_ptr<CMenu::Items>& items, MenuForm form, UINT resolution,
               MenuHandlers handlers);
    ~SystemMenu();
    SystemMenu(const SystemMenu&) = delete;
    SystemMenu& operator=(const SystemMenu&) = delete;

    HMENU Handle() const { return menu; }
    // Of the window that shows the menu. True: the message was about it.
    bool Receive(const Message& message);

  private:
    struct Pictures {
        ~Pictures();
        std::vector<HBITMAP> bitmaps;
    };
    struct Popup {
        std::shared_ptr<CMenu::Items> items;
        std::unique_ptr<Pictures> pictures;
    };

    void Fill(HMENU shown);
    void Empty(HMENU shown);
    void Add(HMENU shown, const MenuItem& item, Pictures& pictures);

    const MenuHandlers handlers;
    const UINT dpi;
    HMENU menu;
    std::map<HMENU, Popup> popups;
};

}  // namespace permora::win32
