#include "security/results_dialog.h"

#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "framework/keyboard.h"
#include "framework/menu.h"
#include "platform/ascii.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "security/missing_rights.h"

namespace permora {
namespace {

constexpr int kResultWidths[] = {150, 70, 260, 300};
static_assert(std::size(kResultWidths) == kResultTitles.size());

}  // namespace

void ShowResults(CWnd* owner, ChangeResults results, const TryAgain& tryAgain) {
    for (const ObjectResult& failed : results.Listed(ResultState::kFailed))
        NoteFailure(failed.outcome.code);
    if (const Outcome* single = results.Single())
        ShowNamedOutcome(owner != nullptr ? owner->GetSafeHwnd() : nullptr, *single);
    else if (results.Count(ResultState::kFailed) + results.Count(ResultState::kLeftAlone) > 0)
        CResultsDlg(owner, std::move(results), tryAgain).DoModal();
}

const MessageMap& CResultsDlg::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CResultsDlg>(
        CDialog::GetMessageMap(), {
                                      {IDC_TRY_AGAIN, Notify::kClicked, &CResultsDlg::OnTryAgain},
                                      {IDC_COPY_ALL_RESULTS, Notify::kClicked, &CResultsDlg::OnCopyAll},
                                      {IDC_RESULTS, Notify::kColumnClick, &CResultsDlg::OnColumnClick},
                                      {IDC_RESULTS, Notify::kKeyDown, &CResultsDlg::OnKeyDown},
                                      {IDC_RESULTS, Notify::kRightClick, &CResultsDlg::OnRightClick},
                                  });
    return kMap;
}

CResultsDlg::CResultsDlg(CWnd* ownerWindow, ChangeResults shown, TryAgain work)
    : CDialog(IDD_CHANGE_RESULTS, ownerWindow), results(std::move(shown)), tryAgain(std::move(work)) {}

bool CResultsDlg::OnInitDialog() {
    CListCtrl& list = List();
    for (std::size_t column = 0; column < kResultTitles.size(); ++column)
        list.InsertColumn(static_cast<int>(column), kResultTitles.at(column), kResultWidths[column]);
    list.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    list.SetWindowText("What happened");  // its accessible name
    list.SetTexts(this);
    Show();
    list.SetFocus();
    return false;  // the list has the focus
}

// The rows' data are their numbers among the results.
void CResultsDlg::Show() {
    CListCtrl& list = List();
    list.DeleteAllItems();
    list.AppendItems(static_cast<int>(results.RowCount()));
    Sort();
    if (list.GetItemCount() > 0) {
        list.SetSelected(0, true);
        list.SetFocusedRow(0);
    }
    GetDlgItem(IDC_RESULTS_SUMMARY)->SetWindowText(results.Summary());
    GetDlgItem(IDC_TRY_AGAIN)->EnableWindow(MayTryAgain());
}

// A change that was stopped has not come to all objects, so it is made again as a whole.
bool CResultsDlg::MayTryAgain() const {
    return tryAgain && !results.Listed(ResultState::kFailed).empty() && results.Stop() == nullptr;
}

// On failure of the whole, all that was to be tried stays in the list.
void CResultsDlg::OnTryAgain() {
    if (!MayTryAgain()) return;
    ChangeResults next = results;
    const std::vector<ObjectPlace> places = next.TakeFailed();
    if (tryAgain(*this, places, next)) {
        results = std::move(next);
        Show();
    } else if (const Outcome* stop = next.Stop()) {
        ShowNamedOutcome(GetSafeHwnd(), *stop);
    }
    List().SetFocus();
}

// ---- The list ----

void CResultsDlg::OnColumnClick(Notification& notification) {
    sorting = OrderAfterClick(sorting, notification.column);
    List().ShowSortMark(sorting->column, sorting->direction);
    Sort();
}

void CResultsDlg::Sort() {
    if (!sorting) return;
    std::vector<std::string> keys;
    for (std::size_t row = 0; row < results.RowCount(); ++row)
        keys.push_back(InLowerCase(ResultText(results.Row(row), static_cast<std::size_t>(sorting->column))));
    const bool isUp = sorting->direction == SortOrder::kUp;
    List().SortItems([&](std::intptr_t one, std::intptr_t other) {
        const std::string& first = keys[static_cast<std::size_t>(isUp ? one : other)];
        return first < keys[static_cast<std::size_t>(isUp ? other : one)];
    });
}

void CResultsDlg::OnKeyDown(Notification& notification) {
    const bool isCopy = notification.key == 'C' && IsControlKeyDown();
    const bool isSelectAll = notification.key == 'A' && IsControlKeyDown();
    notification.handled = isCopy || isSelectAll;
    if (isCopy) Copy(CopiedRows::kSelected);
    for (int row = 0; isSelectAll && row < List().GetItemCount(); ++row)
        List().SetSelected(row, true);
}

void CResultsDlg::OnRightClick(Notification& notification) {
    const CMenu menu = CMenu::Load(IDR_CHANGE_RESULTS);
    if (!menu || notification.row < 0) return;
    const Rect place = List().GetWindowRect();
    CMenu popup = menu.GetSubMenu(0);
    popup.Enable(IDC_TRY_AGAIN, MayTryAgain());
    switch (popup.TrackPopup({place.left + notification.point.x, place.top + notification.point.y}, *this)) {
        case ID_EDIT_COPY:
            return Copy(CopiedRows::kSelected);
        case IDC_COPY_ALL_RESULTS:
            return Copy(CopiedRows::kAll);
        case IDC_TRY_AGAIN:
            return OnTryAgain();
        default:
            return;
    }
}

void CResultsDlg::OnCopyAll() {
    Copy(CopiedRows::kAll);
}

// In the order of the list.
void CResultsDlg::Copy(CopiedRows rows) {
    std::string text;
    const CListCtrl& list = List();
    for (int row = 0; row < list.GetItemCount(); ++row)
        if (rows == CopiedRows::kAll || list.IsSelected(row))
            text += ResultLine(results.Row(static_cast<std::size_t>(list.GetItemData(row))));
    CopyTextOrTell(*this, text);
}

std::string CResultsDlg::Text(std::intptr_t data, int column) const {
    return ResultText(results.Row(static_cast<std::size_t>(data)), static_cast<std::size_t>(column));
}

CListCtrl& CResultsDlg::List() const {
    return *GetDlgItem<CListCtrl>(IDC_RESULTS);
}

}  // namespace permora
