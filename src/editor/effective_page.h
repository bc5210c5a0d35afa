// CPage4: the rights that an account has by the first selected item's access list.
#pragma once

#include "framework/list_ctrl.h"
#include "framework/property_sheet.h"
#include "security/object_security.h"

namespace permora {

class CPage4 : public CPropertyPage {
  public:
    CPage4();

    // Set before the sheet is shown, and borrowed while it runs; one item at least, which is read.
    const RememberedPlace* place = nullptr;

  protected:
    bool OnInitDialog() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnChangeAccount();
    // On false, nothing has changed, and a message box has been shown.
    bool ShowRights();

    CListCtrl& RightsList() const;
    CEdit& AccountField() const;

    AccountRecord account;  // the last one chosen
};

}  // namespace permora
