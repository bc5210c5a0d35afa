// CAttributesDlg: shows the attributes of the first selected item, and asks for those of all of them.
#pragma once

#include <array>
#include <string>

#include "browser/attribute_boxes.h"
#include "framework/dialog.h"
#include "platform/api/base.h"

namespace permora {

class CAttributesDlg : public CDialog {
  public:
    // Of an item with these FILE_ATTRIBUTE_ flags, and perhaps of others beside it.
    CAttributesDlg(std::string itemName, DWORD attributes, CWnd* ownerWindow);

    CheckedBoxes boxes;  // those of the item, and after OK what the user has chosen

  protected:
    bool OnInitDialog() override;
    void OnOK() override;

  private:
    const std::string name;
    const bool isFolder;
    std::array<CButton*, kAttributeBoxCount> buttons{};  // by AttributeBox
};

}  // namespace permora
