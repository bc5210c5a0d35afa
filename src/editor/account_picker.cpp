#include "editor/account_picker.h"

#include "editor/required_control.h"
#include "framework/long_work.h"
#include "platform/api/errors.h"
#include "resources/resource_ids.h"
#include "security/account_lookup.h"
#include "security/account_search.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

enum Column { kName, kDomain, kType };

}  // namespace

const MessageMap& CDlgUsersAndGroups::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CDlgUsersAndGroups>(
        CDialog::GetMessageMap(),
        {
            {IDC_FIND_ACCOUNTS, Notify::kClicked, &CDlgUsersAndGroups::OnFind},
            {IDC_FOUND_ACCOUNTS, Notify::kClick, &CDlgUsersAndGroups::OnAccountClicked},
            {IDC_FOUND_ACCOUNTS, Notify::kItemChanged, &CDlgUsersAndGroups::OnAccountSelected},
            {IDC_FOUND_ACCOUNTS, Notify::kDoubleClick, &CDlgUsersAndGroups::OnOK},
            {IDC_PICKER_OK, Notify::kClicked, &CDlgUsersAndGroups::OnOK},
            {IDC_PICKER_CANCEL, Notify::kClicked, &CDlgUsersAndGroups::OnCancel},
        });
    return kMap;
}

CDlgUsersAndGroups::CDlgUsersAndGroups(CWnd* ownerWindow) : CDialog(IDD_ACCOUNT_PICKER, ownerWindow) {}

bool CDlgUsersAndGroups::OnInitDialog() {
    auto& list = RequiredControl<CListCtrl>(*this, IDC_FOUND_ACCOUNTS);
    CEdit& nameField = NameField();

    nameField.SetWindowText(AccountDisplayName(result));
    list.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    list.InsertColumn(kName, "Name", 120);
    list.InsertColumn(kDomain, "Domain", 100);
    list.InsertColumn(kType, "Type", 100);
    CDialog::OnInitDialog();
    nameField.SetFocus();
    return false;  // the focus is set
}

void CDlgUsersAndGroups::OnFind() {
    CListCtrl& list = FoundAccounts();
    list.DeleteAllItems();
    Outcome outcome;
    std::vector<AccountRecord> found;
    DoLongWork(*this, [&] { outcome = FindLocalAccounts(found); });
    ShowOutcome(GetSafeHwnd(), outcome);
    for (const AccountRecord& account : found) {
        const int row = list.GetItemCount();
        list.InsertItem(row, account.name);
        list.SetItemText(row, kDomain, account.domain);
        list.SetItemText(row, kType, AccountTypeText(account.use));
    }
}

void CDlgUsersAndGroups::OnAccountClicked(Notification& notification) {
    if (notification.row < 0) return;  // beside the rows
    const CListCtrl& list = FoundAccounts();
    const std::string name = list.GetItemText(notification.row, kName);
    if (name.empty()) return;
    const std::string domain = list.GetItemText(notification.row, kDomain);
    NameField().SetWindowText(QualifiedAccountName(domain, name));
}

// The keyboard selects without a click.
void CDlgUsersAndGroups::OnAccountSelected(Notification& notification) {
    if (FoundAccounts().IsSelected(notification.row)) OnAccountClicked(notification);
}

void CDlgUsersAndGroups::OnOK() {
    const std::string name = NameField().GetWindowText();
    if (name.empty()) {
        ShowErrorBox(GetSafeHwnd(), "Account name is not valid");
        return;
    }
    if (LookupAccountByName(name.c_str(), result) != ERROR_SUCCESS) {
        ShowErrorBox(GetSafeHwnd(), "Account name is not valid user or group name");
        return;
    }
    CDialog::OnOK();
}

CListCtrl& CDlgUsersAndGroups::FoundAccounts() const {
    return RequiredControl<CListCtrl>(*this, IDC_FOUND_ACCOUNTS, "Error: cannot get control pointer");
}

CEdit& CDlgUsersAndGroups::NameField() const {
    return RequiredControl<CEdit>(*this, IDC_ACCOUNT_NAME);
}

}  // namespace permora
