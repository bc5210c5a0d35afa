// CAttributesDlg: shows the attributes of the first selected item and gives what is chosen to all of them.
#pragma once

#include <array>
#include <span>

#include "browser/attribute_boxes.h"
#include "framework/dialog.h"

namespace permora {

class CAttributesDlg : public CDialog {
  public:
    explicit CAttributesDlg(CWnd* ownerWindow = nullptr);

    // The selected items, relative to the current directory; at least one. Borrowed: names and array must
    // outlive DoModal.
    std::span<const char* const> names;

  protected:
    // Where the first item's attributes cannot be read a box says why, and the dialog is not shown.
    bool OnInitDialog() override;
    // Closes the dialog in either case; a box tells the first failure.
    void OnOK() override;

  private:
    CheckedBoxes shown;                                // of the first item when the dialog opened
    std::array<CButton*, kAttributeBoxCount> boxes{};  // by AttributeBox
};

}  // namespace permora
