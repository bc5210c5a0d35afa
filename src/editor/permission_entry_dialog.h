// CDlgPermissions: one access entry, right by right.
#pragma once

#include <optional>
#include <span>

#include "editor/permission_boxes.h"
#include "framework/dialog.h"
#include "platform/remembered_object.h"
#include "security/access_entry_list.h"
#include "security/account_news.h"

namespace permora {

// The caller sets the fields, runs the dialog and, after IDOK, takes the choice. After IDCANCEL the fields
// are unchanged.
class CDlgPermissions : public CDialog {
  public:
    explicit CDlgPermissions(CWnd* ownerWindow = nullptr);

    PermissionChoice choice;
    bool inheritedEntry = false;           // its rights are locked; others can be added
    bool readOnly = false;                 // the entry is only looked at
    bool singleScope = false;              // offer "This folder only" alone
    std::optional<RememberedObject> item;  // whose list it is, for the choice of accounts

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    void OnOK() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnChangeAccount();
    void OnClearAll();
    void OnRightClicked(Notification& notification);
    void OnReadyMade(Notification& notification);

    std::span<const InheritanceScope> ScopesToOffer() const;
    void NameRights();
    void LockInherited();
    void LockAll();
    void ShowAccount();
    void ShowBoxes();
    CButton* BoxOf(RightColumn column, std::size_t row) const;

    AccountRecord pendingAccount;  // becomes the choice's when OK is pressed
    AccountNewsWatch news;
    PermissionBoxes boxes;
};

}  // namespace permora
