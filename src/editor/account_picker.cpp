#include "editor/account_picker.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "editor/required_control.h"
#include "framework/long_work.h"
#include "framework/styles.h"
#include "platform/api/errors.h"
#include "platform/api/shell.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "security/account_lookup.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

enum Column { kName, kDomain, kType };

std::string CountText(int count) {
    return count == 1 ? "1 account" : std::to_string(count) + " accounts";
}

}  // namespace

const MessageMap& CDlgUsersAndGroups::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CDlgUsersAndGroups>(
        CDialog::GetMessageMap(),
        {
            {IDC_ACCOUNT_NAME, Notify::kTextChanged, &CDlgUsersAndGroups::OnTextChanged},
            {IDC_FIND_ACCOUNTS, Notify::kClicked, &CDlgUsersAndGroups::OnFind},
            {IDC_STOP_SEARCH, Notify::kClicked, &CDlgUsersAndGroups::OnStop},
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

    SetName(AccountNameSoFar(result));
    ShowSearch(SearchState::kIdle, "");
    list.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    list.InsertColumn(kName, "Name", 120);
    list.InsertColumn(kDomain, "Domain", 100);
    list.InsertColumn(kType, "Type", 100);
    CDialog::OnInitDialog();
    nameField.SetFocus();
    return false;  // the focus is set
}

void CDlgUsersAndGroups::OnFind() {
    FoundAccounts().DeleteAllItems();
    Outcome outcome;
    std::vector<AccountRecord> found;
    DoLongWork(*this, [&] { outcome = FindLocalAccounts(found); });
    ShowOutcome(GetSafeHwnd(), outcome);
    local = std::move(found);
    ShowFound();
}

void CDlgUsersAndGroups::ShowFound() {
    FoundAccounts().DeleteAllItems();
    std::vector<AccountRecord> shown;
    std::ranges::copy_if(local, std::back_inserter(shown),
                         [this](const AccountRecord& account) { return IsFoundBy(typed, account); });
    AddRows(shown);
    ShowEnd({});
    if (StateOfDomain().availability == DomainAvailability::kNone) return;
    const DWORD error = domain.Start(typed, local);
    if (error == ERROR_SUCCESS)
        ShowProgress();
    else
        ShowSearch(SearchState::kIdle, SystemMessageLine(error));
}

void CDlgUsersAndGroups::ShowProgress() {
    ShowSearch(SearchState::kRunning,
               "Searching the domain: " + CountText(FoundAccounts().GetItemCount()) + " so far");
}

// A list that is not whole never looks so.
void CDlgUsersAndGroups::ShowEnd(const SearchOutcome& outcome) {
    const std::string count = CountText(FoundAccounts().GetItemCount());
    const std::string missing = MissingAccountsText(outcome);
    if (outcome.error == ERROR_OPERATION_ABORTED)
        ShowSearch(SearchState::kIdle, "Stopped: there may be more than these " + count);
    else
        ShowSearch(SearchState::kIdle, missing.empty() ? count : missing);
}

void CDlgUsersAndGroups::AddRows(const std::vector<AccountRecord>& accounts) {
    CListCtrl& list = FoundAccounts();
    for (const AccountRecord& account : accounts) {
        const int row = list.GetItemCount();
        list.InsertItem(row, account.name);
        list.SetItemText(row, kDomain, account.domain);
        list.SetItemText(row, kType, AccountTypeText(account.use));
    }
}

void CDlgUsersAndGroups::ShowSearch(SearchState state, const std::string& text) {
    RequiredControl<CStatic>(*this, IDC_SEARCH_STATE).SetWindowText(text);
    auto& stop = RequiredControl<CButton>(*this, IDC_STOP_SEARCH);
    if (state == SearchState::kIdle && stop.HasFocus()) NameField().SetFocus();
    stop.ShowWindow(state == SearchState::kRunning ? SW_SHOW : SW_HIDE);
}

void CDlgUsersAndGroups::OnStop() {
    domain.Stop();
}

void CDlgUsersAndGroups::OnDestroy() {
    domain.Close();
    local.clear();
    CDialog::OnDestroy();
}

// After the first search, the list follows what is typed.
void CDlgUsersAndGroups::OnTextChanged() {
    typed = isOwnText ? std::string() : NameField().GetWindowText();
    if (!isOwnText && !local.empty()) ShowFound();
}

void CDlgUsersAndGroups::SetName(const std::string& name) {
    isOwnText = true;
    NameField().SetWindowText(name);
    isOwnText = false;
}

void CDlgUsersAndGroups::OnAccountClicked(Notification& notification) {
    if (notification.row < 0) return;  // beside the rows
    const CListCtrl& list = FoundAccounts();
    const std::string name = list.GetItemText(notification.row, kName);
    if (name.empty()) return;
    SetName(QualifiedAccountName(list.GetItemText(notification.row, kDomain), name));
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
    DWORD error = ERROR_SUCCESS;
    DoLongWork(*this, [&] { error = LookupAccountByName(name.c_str(), result); });
    if (error != ERROR_SUCCESS) {
        const std::string reason = NotLookedUpText(error);
        ShowErrorBox(GetSafeHwnd(), reason.empty() ? "Account name is not valid user or group name"
                                                   : (name + ": " + reason + '.').c_str());
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
