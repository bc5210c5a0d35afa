// CDlgUsersAndGroups: the user types an account or chooses one of the machine's.
#pragma once

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "security/account_record.h"

namespace permora {

class CDlgUsersAndGroups : public CDialog {
  public:
    explicit CDlgUsersAndGroups(CWnd* ownerWindow = nullptr);

    // The caller may preset an account, which the edit box then shows. After IDOK it is the chosen one; after
    // IDCANCEL it is unchanged.
    AccountRecord result;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;  // stays open when the edit box names no account
    const MessageMap& GetMessageMap() const override;

  private:
    void OnFind();
    void OnAccountClicked(Notification& notification);
    void OnAccountSelected(Notification& notification);

    // Each ends the program, after its box, when the control is missing.
    CListCtrl& FoundAccounts() const;
    CEdit& NameField() const;
};

}  // namespace permora
