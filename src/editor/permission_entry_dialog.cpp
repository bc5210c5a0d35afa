#include "editor/permission_entry_dialog.h"

#include <algorithm>
#include <array>

#include "editor/account_picker.h"
#include "editor/required_control.h"
#include "resources/resource_ids.h"
#include "security/usable_combinations.h"

namespace permora {
namespace {

unsigned int BoxId(RightColumn column, std::size_t row) {
    const AccessRight& right = kAccessRights[row];
    return static_cast<unsigned int>(column == RightColumn::kAllow ? right.allowBox : right.denyBox);
}

// The buttons beside the rights.
struct ReadyMade {
    unsigned int button;
    RightColumn column;
    DWORD mask;
};
constexpr std::array<ReadyMade, 6> kReadyMade = {{
    {IDC_ALLOW_READ, RightColumn::kAllow, kReadRights},
    {IDC_ALLOW_MODIFY, RightColumn::kAllow, kModifyRights},
    {IDC_ALLOW_ALL, RightColumn::kAllow, kFullControlAsOne},
    {IDC_DENY_READ, RightColumn::kDeny, kReadRights},
    {IDC_DENY_MODIFY, RightColumn::kDeny, kModifyRights},
    {IDC_DENY_ALL, RightColumn::kDeny, kFullControlAsOne},
}};

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
            {IDC_ALLOW_READ, IDC_DENY_ALL, Notify::kClicked, &CDlgPermissions::OnReadyMade},
            {IDC_ENTRY_OK, Notify::kClicked, &CDlgPermissions::OnOK},
            {IDC_ENTRY_CANCEL, Notify::kClicked, &CDlgPermissions::OnCancel},
        });
    return kMap;
}

CDlgPermissions::CDlgPermissions(CWnd* ownerWindow) : CDialog(IDD_PERMISSION_ENTRY, ownerWindow) {}

bool CDlgPermissions::OnInitDialog() {
    auto& accountField = RequiredControl<CEdit>(*this, IDC_ENTRY_ACCOUNT);
    auto& scopes = RequiredControl<CComboBox>(*this, IDC_APPLY_ONTO);
    auto& childrenOnly = RequiredControl<CButton>(*this, IDC_CHILDREN_ONLY);

    accountField.EnableWindow(false);
    childrenOnly.SetCheck(StateOf(choice.childrenOnly));
    childrenOnly.EnableWindow(!singleScope);
    for (const InheritanceScope& scope : ScopesToOffer())
        scopes.AddString(scope.text);
    scopes.SetCurSel(choice.applyIndex);
    boxes = {};
    boxes.SetMask(RightColumn::kAllow, choice.allowMask);
    boxes.SetMask(RightColumn::kDeny, choice.denyMask);
    NameRights();
    if (inheritedEntry) LockInherited();
    if (readOnly) LockAll();
    ShowBoxes();
    pendingAccount = choice.account;
    news.Start([this] { ShowAccount(); });
    ShowAccount();
    const bool wantsFocus = CDialog::OnInitDialog();
    if (inheritedEntry || readOnly) return wantsFocus;
    // Not to "Change...": the Enter key must press OK.
    scopes.SetFocus();
    return false;
}

void CDlgPermissions::OnDestroy() {
    news.Stop();
    CDialog::OnDestroy();
}

std::span<const InheritanceScope> CDlgPermissions::ScopesToOffer() const {
    const std::span all(kInheritanceScopes);
    return singleScope ? all.first(1) : all;
}

// For those who know the rights by the names that programmers use.
void CDlgPermissions::NameRights() {
    for (std::size_t row = 0; row < PermissionBoxes::kRows; ++row)
        for (const RightColumn column : kRightColumns)
            if (CButton* box = BoxOf(column, row)) box->SetToolTip(kAccessRights[row].constants);
}

void CDlgPermissions::LockInherited() {
    boxes.LockChecked();
    for (const unsigned int id :
         std::initializer_list<unsigned int>{IDC_APPLY_ONTO, IDC_CHILDREN_ONLY, IDC_CHANGE_ENTRY_ACCOUNT})
        GetDlgItem(id)->EnableWindow(false);
}

void CDlgPermissions::LockAll() {
    LockInherited();
    boxes.LockAll();
    GetDlgItem(IDC_CLEAR_ALL)->EnableWindow(false);
    for (const ReadyMade& each : kReadyMade)
        GetDlgItem(each.button)->EnableWindow(false);
}

void CDlgPermissions::OnChangeAccount() {
    CDlgUsersAndGroups picker(this);
    picker.item = item;
    picker.result = pendingAccount;
    picker.DoModal();
    pendingAccount = picker.result;  // unchanged when the picker was cancelled
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

void CDlgPermissions::OnReadyMade(Notification& notification) {
    const auto* const chosen = std::ranges::find(kReadyMade, notification.id, &ReadyMade::button);
    if (chosen == kReadyMade.end()) return;
    boxes.Take(chosen->column, chosen->mask);
    ShowBoxes();
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
    GetDlgItem(IDC_ENTRY_ACCOUNT)->SetWindowText(AccountNameSoFar(pendingAccount));
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
