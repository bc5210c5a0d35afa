// CAttributesDlg: shows the attributes of the first selected item and gives the chosen ones to all of them.
#pragma once

#include <array>

#include "browser/attribute_boxes.h"
#include "framework/dialog.h"
#include "platform/place.h"

namespace permora {

class CAttributesDlg : public CDialog {
  public:
    // Of the items of a folder, one at least.
    CAttributesDlg(Place items, CWnd* ownerWindow);

  protected:
    // If the first item's attributes cannot be read, a box shows the error instead of the dialog.
    bool OnInitDialog() override;
    // Always closes the dialog. The first failure is shown in a box.
    void OnOK() override;

  private:
    Place place;
    CheckedBoxes shown;                                // of the first item when the dialog opened
    std::array<CButton*, kAttributeBoxCount> boxes{};  // by AttributeBox
};

}  // namespace permora
