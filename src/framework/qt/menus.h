// Native menus of the shared half's menus.
#pragma once

#include <QMenu>
#include <functional>
#include <memory>

#include "framework/menu_items.h"

namespace permora::qt {

struct MenuHandlers {
    std::function<void(CMenu::Items&)> opening;     // before a menu is shown; may change the entries
    std::function<void(unsigned int)> highlighted;  // 0: none, or a pop-up
    std::function<void(unsigned int)> chosen;
};

// Makes `menu` show `items`, built anew each time it opens.
void ShowItems(QMenu& menu, const std::shared_ptr<CMenu::Items>& items, const MenuHandlers& handlers);
// A title or text with its mnemonic.
QString MenuText(const std::string& text);

}  // namespace permora::qt
