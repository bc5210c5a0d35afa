// Menus from resources.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "framework/images.h"
#include "framework/window.h"

namespace permora {

// A menu or one of its pop-ups; copies mean the same menu. Positions count separators.
class CMenu {
  public:
    CMenu() = default;
    // Menu resource `id`; an empty menu when there is none.
    static CMenu Load(unsigned int id);
    explicit operator bool() const { return items != nullptr; }

    CMenu GetSubMenu(int position) const;

    void CheckByPosition(int position, bool checked);
    void CheckRadioByPosition(int first, int last, int checked);
    // An entry at the end. Of those that are added so, one is checked.
    void AppendRadio(unsigned int id, const std::string& text);
    // The same for a command, which may have a picture, and for a line before it.
    void AppendCommand(unsigned int id, const std::string& text, const CIcon& icon);
    void AppendSeparator();
    // By command id, in this menu and its pop-ups.
    void Enable(unsigned int id, bool enabled);
    void SetText(unsigned int id, const std::string& text);

    // Shows the menu at a screen position and returns the chosen command, 0 for none. The caller routes it.
    // Commands without a handler in the owner's frame are grey.
    unsigned int TrackPopup(Point screen, CWnd& owner) const;

    struct Items;
    const std::shared_ptr<Items>& Shared() const { return items; }

  private:
    explicit CMenu(std::shared_ptr<Items> shared) : items(std::move(shared)) {}

    std::shared_ptr<Items> items;
};

}  // namespace permora
