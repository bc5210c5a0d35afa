#include "editor/account_picker.h"

#include <utility>

#include "editor/required_control.h"
#include "framework/long_work.h"
#include "framework/styles.h"
#include "platform/api/errors.h"
#include "platform/api/shell.h"
#include "platform/ascii.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "security/account_lookup.h"
#include "security/message_boxes.h"
#include "security/object_server.h"

namespace permora {
namespace {

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
            {IDC_FOUND_ACCOUNTS, Notify::kColumnClick, &CDlgUsersAndGroups::OnColumnClick},
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
    list.InsertColumn(FoundAccounts::kName, "Name", 120);
    list.InsertColumn(FoundAccounts::kDomain, "Domain", 100);
    list.InsertColumn(FoundAccounts::kType, "Type", 100);
    list.SetTexts(&found);
    CDialog::OnInitDialog();
    nameField.SetFocus();
    return false;  // the focus is set
}

void CDlgUsersAndGroups::OnFind() {
    FoundList().DeleteAllItems();
    found.Clear();
    Outcome outcome;
    std::vector<AccountRecord> accounts;
    DoLongWork(*this, [&] { outcome = FindLocalAccounts(accounts); });
    ShowOutcome(GetSafeHwnd(), outcome);
    local = std::move(accounts);
    found.Add(local);
    covered.reset();
    ShowRows();
    SearchDomain();
}

void CDlgUsersAndGroups::ShowRows() {
    found.SetFilter(typed);
    CListCtrl& list = FoundList();
    list.DeleteAllItems();
    list.AppendItems(found.Count());
    ShowEnd({});
}

void CDlgUsersAndGroups::SearchDomain() {
    if (StateOfDomain().availability == DomainAvailability::kNone) return;
    covered.reset();
    searched = typed;
    const DWORD error = domain.Start(typed, local);
    if (error == ERROR_SUCCESS)
        ShowProgress();
    else
        ShowSearch(SearchState::kIdle, SystemMessageLine(error));
}

void CDlgUsersAndGroups::EndSearch(const SearchOutcome& outcome) {
    if (outcome.error == ERROR_SUCCESS) covered = searched;
    ShowEnd(outcome);
}

void CDlgUsersAndGroups::ShowProgress() {
    ShowSearch(SearchState::kRunning,
               "Searching the domain: " + CountText(FoundList().GetItemCount()) + " so far");
}

// A list that is not whole never looks so.
void CDlgUsersAndGroups::ShowEnd(const SearchOutcome& outcome) {
    const std::string count = CountText(FoundList().GetItemCount());
    const std::string missing = MissingAccountsText(outcome);
    if (outcome.error == ERROR_OPERATION_ABORTED)
        ShowSearch(SearchState::kIdle, "Stopped: there may be more than these " + count);
    else
        ShowSearch(SearchState::kIdle, missing.empty() ? count : missing);
}

void CDlgUsersAndGroups::TakeAccounts(const std::vector<AccountRecord>& accounts) {
    CListCtrl& list = FoundList();
    const auto selected = found.AccountAt(list.NextSelected(0));
    found.Add(accounts);
    list.AppendItems(found.Count() - list.GetItemCount());
    SelectAgain(selected);
}

void CDlgUsersAndGroups::SelectAgain(std::optional<std::size_t> account) {
    CListCtrl& list = FoundList();
    if (!account || found.AccountAt(list.NextSelected(0)) == account) return;
    const int row = found.RowOf(*account);
    list.SetSelected(row, true);
    list.SetFocusedRow(row);
}

void CDlgUsersAndGroups::OnColumnClick(Notification& notification) {
    CListCtrl& list = FoundList();
    const auto selected = found.AccountAt(list.NextSelected(0));
    const ListOrder order = OrderAfterClick(found.Sorting(), notification.column);
    found.SortBy(order);
    list.ShowSortMark(order.column, order.direction);
    SelectAgain(selected);
    list.RedrawWindow();
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
    found = {};
    CDialog::OnDestroy();
}

// After the first search, the list follows what is typed. The domain is searched again only for accounts that
// may be missing.
void CDlgUsersAndGroups::OnTextChanged() {
    typed = isOwnText ? std::string() : NameField().GetWindowText();
    if (isOwnText || local.empty()) return;
    ShowRows();
    if (!covered || InLowerCase(typed).find(InLowerCase(*covered)) == std::string::npos) SearchDomain();
}

void CDlgUsersAndGroups::SetName(const std::string& name) {
    isOwnText = true;
    NameField().SetWindowText(name);
    isOwnText = false;
}

void CDlgUsersAndGroups::OnAccountClicked(Notification& notification) {
    // None beside the rows.
    if (const auto account = found.AccountAt(notification.row)) SetName(found.TextFor(*account));
}

// The keyboard selects without a click.
void CDlgUsersAndGroups::OnAccountSelected(Notification& notification) {
    if (FoundList().IsSelected(notification.row)) OnAccountClicked(notification);
}

void CDlgUsersAndGroups::OnOK() {
    const std::string name = NameField().GetWindowText();
    if (name.empty()) {
        ShowErrorBox(GetSafeHwnd(), "Account name is not valid");
        return;
    }
    DWORD error = ERROR_SUCCESS;
    DoLongWork(*this, [&] {
        error = LookupAccountByName(name.c_str(), result, item ? ServerOfItem(*item) : server);
    });
    if (error != ERROR_SUCCESS) {
        const std::string reason = NotLookedUpText(error);
        ShowErrorBox(GetSafeHwnd(), reason.empty() ? "Account name is not valid user or group name"
                                                   : (name + ": " + reason + '.').c_str());
        return;
    }
    CDialog::OnOK();
}

CListCtrl& CDlgUsersAndGroups::FoundList() const {
    return RequiredControl<CListCtrl>(*this, IDC_FOUND_ACCOUNTS, "Error: cannot get control pointer");
}

CEdit& CDlgUsersAndGroups::NameField() const {
    return RequiredControl<CEdit>(*this, IDC_ACCOUNT_NAME);
}

}  // namespace permora
