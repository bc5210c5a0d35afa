// CDlgUsersAndGroups: the user names one account, by typing or by choosing from those of the machine.
#pragma once

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "security/account_record.h"

namespace permora {

class CDlgUsersAndGroups : public CDialog {
  public:
    explicit CDlgUsersAndGroups(CWnd* ownerWindow = nullptr);

    // An account set here is offered in the edit box. After IDOK it is the chosen one (its SID; names are
    // looked up on demand); after IDCANCEL it is as the caller left it.
    AccountRecord result;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;  // resolves what stands in the edit box; stays open when it is no account
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
