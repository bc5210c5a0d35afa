// How the user's clicks and keys change the selection of a list view.
#pragma once

#include <vector>

#include "framework/list_ctrl.h"

namespace permora {

// How a click or a move changes the selection, by the keys held down.
enum class SelectMode {
    kReplace,   // the row alone
    kToggle,    // Ctrl: the row's own state changes; a move by keyboard changes none
    kExtend,    // Shift: from the anchor to the row, nothing else
    kAddRange,  // Ctrl and Shift: from the anchor to the row as well
};

// Selects `row` alone; -1: nothing.
void SelectOnly(CListCtrl& list, int row);
// A click on `row`, which becomes the focus row and the mark; -1: beside all rows.
void SelectByClick(CListCtrl& list, int row, SelectMode mode);
// The keyboard's move to `row`.
void SelectByMove(CListCtrl& list, int row, SelectMode mode);
// The Space key on the focus row: checks or unchecks it (with all selected rows, when it is one of them), or
// selects it in a list without check boxes.
void PressSpace(CListCtrl& list, SelectMode mode);
void ToggleCheck(CListCtrl& list, int row);

// The selection that a frame drawn with the mouse makes. Meant for lists that allow several rows.
class BandSelection {
  public:
    // Clears the selection when `mode` is kReplace.
    BandSelection(CListCtrl& list, SelectMode mode);
    // `touched` are the rows that the frame touches now, ascending. kToggle unselects those that were
    // selected before.
    void Update(const std::vector<int>& touched);

  private:
    bool WasSelected(int row) const;

    CListCtrl& list;
    SelectMode mode;
    std::vector<int> before;  // ascending
    std::vector<int> inside;  // ascending
};

}  // namespace permora
