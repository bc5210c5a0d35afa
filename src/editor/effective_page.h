// CPage4: which rights the first selected item's access list leaves to an account.
#pragma once

#include "framework/list_ctrl.h"
#include "framework/property_sheet.h"
#include "security/object_security.h"

namespace permora {

class CPage4 : public CPropertyPage {
  public:
    CPage4();

    // Set before the sheet is shown, and borrowed while it runs; one item at least, which is looked at.
    const RememberedPlace* place = nullptr;

  protected:
    bool OnInitDialog() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnChangeAccount();
    // False, and nothing has changed, after a message box.
    bool ShowRights();

    CListCtrl& RightsList() const;
    CEdit& AccountField() const;

    AccountRecord account;  // the one chosen last
};

}  // namespace permora
