#include "editor/permission_entry_dialog.h"

#include "editor/account_picker.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

unsigned int BoxId(RightColumn column, std::size_t row) {
    const AccessRight& right = kAccessRights[row];
    return static_cast<unsigned int>(column == RightColumn::kAllow ? right.allowBox : right.denyBox);
}

CheckState StateOf(bool isChecked) {
    return isChecked ? CheckState::kChecked : CheckState::kClear;
}

}  // namespace

const MessageMap& CDlgPermissions::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CDlgPermissions>(
        CDialog::GetMessageMap(),
        {
            {IDC_CHANGE_ENTRY_ACCOUNT, Notify::kClicked, &CDlgPermissions::OnChangeAccount},
            {IDC_CLEAR_ALL, Notify::kClicked, &CDlgPermissions::OnClearAll},
            {IDC_ALLOW_FULL_CONTROL, IDC_ALLOW_TAKE_OWNERSHIP, Notify::kClicked,
             &CDlgPermissions::OnRightClicked},
            {IDC_ENTRY_OK, Notify::kClicked, &CDlgPermissions::OnOK},
            {IDC_ENTRY_CANCEL, Notify::kClicked, &CDlgPermissions::OnCancel},
        });
    return kMap;
}

CDlgPermissions::CDlgPermissions(CWnd* ownerWindow) : CDialog(IDD_PERMISSION_ENTRY, ownerWindow) {}

bool CDlgPermissions::OnInitDialog() {
    CWnd* accountField = GetDlgItem(IDC_ENTRY_ACCOUNT);
    auto* childrenOnly = GetDlgItem<CButton>(IDC_CHILDREN_ONLY);
    if (accountField == nullptr || childrenOnly == nullptr ||
        GetDlgItem<CComboBox>(IDC_APPLY_ONTO) == nullptr)
        ShowFatalErrorBox(GetSafeHwnd(), "Error: cannot initialize dialog box");

    accountField->EnableWindow(false);
    childrenOnly->SetCheck(StateOf(choice.childrenOnly));
    FillScopes();
    boxes = {};
    boxes.SetMask(RightColumn::kAllow, choice.allowMask);
    boxes.SetMask(RightColumn::kDeny, choice.denyMask);
    if (inheritedEntry) LockInherited();
    ShowBoxes();
    pendingAccount = choice.account;
    ShowAccount();
    return CDialog::OnInitDialog();
}

void CDlgPermissions::FillScopes() {
    auto* scopes = GetDlgItem<CComboBox>(IDC_APPLY_ONTO);
    if (singleScope) {
        GetDlgItem(IDC_CHILDREN_ONLY)->EnableWindow(false);
        scopes->AddString(kInheritanceScopes.front().text);
    } else {
        for (const InheritanceScope& scope : kInheritanceScopes)
            scopes->AddString(scope.text);
    }
    scopes->SetCurSel(choice.applyIndex);
}

void CDlgPermissions::LockInherited() {
    boxes.LockChecked();
    for (const unsigned int id :
         std::initializer_list<unsigned int>{IDC_APPLY_ONTO, IDC_CHILDREN_ONLY, IDC_CHANGE_ENTRY_ACCOUNT})
        GetDlgItem(id)->EnableWindow(false);
}

void CDlgPermissions::OnChangeAccount() {
    CDlgUsersAndGroups picker(this);
    picker.result = pendingAccount;
    picker.DoModal();
    pendingAccount = picker.result;  // as it was, when the picker was cancelled
    ShowAccount();
}

void CDlgPermissions::OnClearAll() {
    boxes.ClearAll();
    ShowBoxes();
}

void CDlgPermissions::OnRightClicked(Notification& notification) {
    for (const RightColumn column : kRightColumns) {
        for (std::size_t row = 0; row < PermissionBoxes::kRows; ++row) {
            if (BoxId(column, row) != notification.id) continue;
            boxes.Click(column, row, BoxOf(column, row)->IsChecked());
            ShowBoxes();
            return;
        }
    }
}

void CDlgPermissions::OnOK() {
    choice.account = pendingAccount;
    choice.allowMask = boxes.MaskOf(RightColumn::kAllow);
    choice.denyMask = boxes.MaskOf(RightColumn::kDeny);
    choice.applyIndex = GetDlgItem<CComboBox>(IDC_APPLY_ONTO)->GetCurSel();
    choice.childrenOnly = GetDlgItem<CButton>(IDC_CHILDREN_ONLY)->IsChecked();
    CDialog::OnOK();
}

void CDlgPermissions::ShowAccount() {
    GetDlgItem(IDC_ENTRY_ACCOUNT)->SetWindowText(AccountDisplayName(pendingAccount));
}

void CDlgPermissions::ShowBoxes() {
    for (const RightColumn column : kRightColumns) {
        for (std::size_t row = 0; row < PermissionBoxes::kRows; ++row) {
            CButton* box = BoxOf(column, row);
            if (box == nullptr) continue;
            const PermissionBox& state = boxes.At(column, row);
            box->SetCheck(StateOf(state.isChecked));
            box->EnableWindow(!state.isLocked);
        }
    }
}

CButton* CDlgPermissions::BoxOf(RightColumn column, std::size_t row) const {
    return GetDlgItem<CButton>(BoxId(column, row));
}

}  // namespace permora
