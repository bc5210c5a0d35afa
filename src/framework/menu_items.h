// The entries of a menu, which all copies of a CMenu share.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "framework/images.h"
#include "framework/menu.h"

namespace permora {

struct MenuItem {
    unsigned int id = 0;  // 0: separator or pop-up
    std::string text;     // with its mnemonic; after a tab the name of its key, which is only a label
    bool enabled = true;
    bool checked = false;
    bool isRadio = false;                 // checked as one of several
    std::shared_ptr<CMenu::Items> popup;  // null: none
    CIcon icon{};                         // empty: none

    bool IsSeparator() const { return id == 0 && popup == nullptr; }
};

struct CMenu::Items {
    std::vector<MenuItem> entries;
};

// An entry's text as menus take it: blanks around the tab are only there to line texts up.
std::string MenuLabel(const std::string& text);

}  // namespace permora
