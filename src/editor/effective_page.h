// CPage4: which rights the first selected item's access list leaves to an account.
#pragma once

#include <string>

#include "framework/list_ctrl.h"
#include "framework/property_sheet.h"
#include "security/account_record.h"

namespace permora {

class CPage4 : public CPropertyPage {
  public:
    CPage4();

    // The item to look at, set before the sheet is shown; relative to the current directory.
    std::string objectName;

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
