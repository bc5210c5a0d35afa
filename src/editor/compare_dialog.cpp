#include "editor/compare_dialog.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <utility>

#include "editor/account_picker.h"
#include "editor/required_control.h"
#include "framework/long_work.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/effective_rights.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kComparedNameWidth = 180;
constexpr int kComparedRightWidth = 100;
constexpr int kComparisonRemarkWidth = 800;

// Without "Full control", which hardly any list of a file grants in the strict sense.
constexpr std::span kComparedRights = std::span(kAccessRights).subspan<1>();

}  // namespace

CCompareAccountsDlg::CCompareAccountsDlg(RightsComparison& compared, CWnd* ownerWindow)
    : CDialog(IDD_COMPARE_ACCOUNTS, ownerWindow), comparison(compared) {}

const MessageMap& CCompareAccountsDlg::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CCompareAccountsDlg>(
        CDialog::GetMessageMap(),
        {
            {IDC_ADD_COMPARED, Notify::kClicked, &CCompareAccountsDlg::OnAdd},
            {IDC_REMOVE_COMPARED, Notify::kClicked, &CCompareAccountsDlg::OnRemove},
            {IDC_COPY_COMPARED, Notify::kClicked, &CCompareAccountsDlg::OnCopy},
            {IDC_COMPARED_RIGHTS, Notify::kItemChanged, &CCompareAccountsDlg::OnSelected},
            {IDC_COMPARED_RIGHTS, Notify::kColumnClick, &CCompareAccountsDlg::OnColumnClick},
        });
    return kMap;
}

bool CCompareAccountsDlg::OnInitDialog() {
    CListCtrl& table = Table();
    table.InsertColumn(0, "Account", kComparedNameWidth);
    for (const AccessRight& right : kComparedRights)
        table.InsertColumn(static_cast<int>(&right - kComparedRights.data()) + 1, right.listName,
                           kComparedRightWidth);
    table.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    CListCtrl& remarks = RequiredControl<CListCtrl>(*this, IDC_COMPARISON_REMARKS);
    remarks.InsertColumn(0, "Remark", kComparisonRemarkWidth);
    remarks.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    const std::size_t objects = comparison.ObjectCount();
    GetDlgItem(IDC_COMPARED_OBJECTS)
        ->SetWindowText(objects == 1 ? "Rights by the list of the selected object: "
                                     : "Rights by the lists of the " + std::to_string(objects) +
                                           " selected objects, on all of them or on some: ");
    news.Start([this] { ShowRows(Selected()); });
    ShowRows(0);
    table.SetFocus();
    return false;  // the table has the focus
}

void CCompareAccountsDlg::OnDestroy() {
    news.Stop();
    CDialog::OnDestroy();
}

void CCompareAccountsDlg::OnAdd() {
    CDlgUsersAndGroups picker(this);
    if (picker.DoModal() != IDOK) return;
    DoLongWork(*this, [&] { comparison.AddAccount(picker.result); });
    const std::vector<RightsHolder>& accounts = comparison.Accounts();
    const auto added = std::ranges::find_if(
        accounts, [&](const RightsHolder& each) { return IsSameAccount(each.account, picker.result); });
    ShowRows(static_cast<std::size_t>(added - accounts.begin()));
}

void CCompareAccountsDlg::OnRemove() {
    const std::size_t selected = Selected();
    if (selected >= comparison.Accounts().size()) return;
    comparison.RemoveAccount(selected);
    ShowRows(0);
}

void CCompareAccountsDlg::OnCopy() {
    std::string text;
    const CListCtrl& table = Table();
    const auto addLine = [&](const auto& textOf) {
        for (std::size_t column = 0; column < table.Columns().size(); ++column)
            text += (column == 0 ? "" : "\t") + textOf(static_cast<int>(column));
        text += '\n';
    };
    addLine([&](int column) { return table.Columns()[static_cast<std::size_t>(column)].header; });
    for (int row = 0; row < table.GetItemCount(); ++row)
        addLine([&](int column) { return table.GetItemText(row, column); });
    CopyTextOrTell(*this, text);
}

void CCompareAccountsDlg::OnSelected() {
    GetDlgItem(IDC_REMOVE_COMPARED)->EnableWindow(Table().NextSelected(0) >= 0);
}

void CCompareAccountsDlg::OnColumnClick(Notification& notification) {
    order = OrderAfterClick(order, notification.column);
    ShowRows(Selected());
}

std::vector<std::string> CCompareAccountsDlg::TextsOf(RightsHolder& account,
                                                      const DistinctNames& names) const {
    std::vector<std::string> texts = {names.Of(AccountNameSoFar(account.account), account.account)};
    for (const AccessRight& right : kComparedRights)
        texts.emplace_back(comparison.TextOf(account, right));
    return texts;
}

void CCompareAccountsDlg::ShowRows(std::size_t selected) {
    std::vector<RightsHolder>& accounts = comparison.Accounts();
    DistinctNames names;
    for (RightsHolder& account : accounts)
        names.Note(AccountNameSoFar(account.account), account.account);
    std::vector<std::vector<std::string>> rows;
    std::ranges::transform(accounts, std::back_inserter(rows),
                           [&](RightsHolder& account) { return TextsOf(account, names); });
    std::vector<std::size_t> places(rows.size());
    std::iota(places.begin(), places.end(), 0);
    const auto column = static_cast<std::size_t>(order.column);
    std::ranges::stable_sort(places, [&](std::size_t one, std::size_t other) {
        if (order.direction == SortOrder::kDown) std::swap(one, other);
        return rows[one][column] < rows[other][column];
    });
    CListCtrl& table = Table();
    table.DeleteAllItems();
    for (const std::size_t place : places) {
        const int row = table.GetItemCount();
        table.InsertItem(row, rows[place].front());
        table.SetItemData(row, static_cast<std::intptr_t>(place));
        for (std::size_t i = 1; i < rows[place].size(); ++i)
            table.SetItemText(row, static_cast<int>(i), rows[place][i]);
        if (place != selected) continue;
        table.SetSelected(row, true);
        table.SetFocusedRow(row);
    }
    table.ShowSortMark(order.column, order.direction);
    OnSelected();
    GetDlgItem(IDC_COPY_COMPARED)->EnableWindow(!rows.empty());
    ShowRemarks();
}

void CCompareAccountsDlg::ShowRemarks() {
    CListCtrl& list = RequiredControl<CListCtrl>(*this, IDC_COMPARISON_REMARKS);
    list.DeleteAllItems();
    const auto add = [&](const std::string& remark) {
        list.InsertItem(list.GetItemCount(), AsSentence(remark));
    };
    if (!unread.empty()) add(unread);
    for (const RightsHolder& account : comparison.Accounts())
        for (const std::string& remark : account.remarks)
            add(remark);
}

std::size_t CCompareAccountsDlg::Selected() const {
    const int row = Table().NextSelected(0);
    return row < 0 ? comparison.Accounts().size() : static_cast<std::size_t>(Table().GetItemData(row));
}

CListCtrl& CCompareAccountsDlg::Table() const {
    return RequiredControl<CListCtrl>(*this, IDC_COMPARED_RIGHTS);
}

}  // namespace permora
