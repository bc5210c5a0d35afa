// The controls of dialogs. All but the list view, which has list_ctrl.h.
// Controls come from a dialog's template (CWnd::GetDlgItem) and live as long as its window.
#pragma once

#include <string>

#include "framework/images.h"
#include "framework/window.h"

namespace permora {

enum class CheckState { kClear, kChecked };

// Push buttons, check boxes, radio buttons and group boxes.
class CButton : public CWnd {
  public:
    CheckState GetCheck() const;
    // Checking a radio button clears the others of its group, as a click does. No notification is sent.
    void SetCheck(CheckState state);
    bool IsChecked() const { return GetCheck() == CheckState::kChecked; }
};

// A push button that shows bitmaps instead of text.
class CBitmapButton : public CButton {
  public:
    // Makes the button as a child of `owner`, in its client coordinates, for the command `id`, whose tip
    // names it to assistive technology. Bitmap resource ids; 0: none.
    bool Create(CWnd& owner, const Rect& rect, unsigned int id);
    bool LoadBitmaps(unsigned int normal, unsigned int pressed, unsigned int focused, unsigned int disabled);
};

class CEdit : public CWnd {
  public:
    void SelectAll();
    void SelectStart(const std::string& start);  // with which the text begins
};

// Text, icon or bitmap.
class CStatic : public CWnd {};

// A bar from 0 to 100 percent. With the style PBS_MARQUEE it moves without a position.
class CProgressCtrl : public CWnd {
  public:
    void SetPos(int percent);
};

class CComboBox : public CWnd {
  public:
    int AddString(const std::string& text);  // the new item's index
    int GetCurSel() const;                   // -1: nothing selected
    // An index without item selects nothing. No notification is sent.
    void SetCurSel(int index);
};

}  // namespace permora
