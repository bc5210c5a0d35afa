#include "history/history_dialog.h"

#include <iterator>
#include <span>
#include <utility>

#include "framework/long_work.h"
#include "history/undo_dialog.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

// In logical pixels, as wide as the lists together with a scroll bar.
constexpr int kChangeWidths[] = {60, 150, 130, 280, 75, 95};
static_assert(std::size(kChangeWidths) == kChangeTitles.size());
constexpr int kObjectWidths[] = {690, 100};
static_assert(std::size(kObjectWidths) == kChangedObjectTitles.size());
constexpr int kRowWidths[] = {75, 75, 150, 245, 245};
static_assert(std::size(kRowWidths) == kComparedRowTitles.size());

void AddColumns(CListCtrl& list, std::span<const char* const> titles, std::span<const int> widths) {
    for (std::size_t i = 0; i < titles.size(); ++i)
        list.InsertColumn(static_cast<int>(i), titles[i], widths[i]);
    list.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
}

void AddRow(CListCtrl& list, std::span<const std::string> texts) {
    const int row = list.GetItemCount();
    list.InsertItem(row, texts.front());
    for (std::size_t column = 1; column < texts.size(); ++column)
        list.SetItemText(row, static_cast<int>(column), texts[column]);
}

void SelectRow(CListCtrl& list, int row) {
    list.SetSelected(row, true);
    list.SetFocusedRow(row);
}

}  // namespace

const MessageMap& CHistoryDlg::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CHistoryDlg>(
        CDialog::GetMessageMap(),
        {
            {IDC_CHANGES, Notify::kItemChanged, &CHistoryDlg::OnChangeSelected},
            {IDC_CHANGED_OBJECTS, Notify::kItemChanged, &CHistoryDlg::OnObjectSelected},
            {IDC_OBJECTS_BEFORE, Notify::kClicked, &CHistoryDlg::OnPageBefore},
            {IDC_OBJECTS_AFTER, Notify::kClicked, &CHistoryDlg::OnPageAfter},
            {IDC_UNDO_CHANGE, Notify::kClicked, &CHistoryDlg::OnUndo},
        });
    return kMap;
}

CHistoryDlg::CHistoryDlg(const std::string& historyPath, CWnd* ownerWindow)
    : CDialog(IDD_HISTORY, ownerWindow), path(historyPath), view(historyPath) {}

bool CHistoryDlg::OnInitDialog() {
    AddColumns(List(IDC_CHANGES), kChangeTitles, kChangeWidths);
    AddColumns(List(IDC_CHANGED_OBJECTS), kChangedObjectTitles, kObjectWidths);
    AddColumns(List(IDC_BEFORE_AND_AFTER), kComparedRowTitles, kRowWidths);
    news.Start([this] { ShowSelectedObject(); });
    view.Read();
    ShowChanges();
    return CDialog::OnInitDialog();
}

void CHistoryDlg::OnDestroy() {
    news.Stop();
}

void CHistoryDlg::ShowChanges() {
    CListCtrl& list = List(IDC_CHANGES);
    isFilling = true;
    list.DeleteAllItems();
    for (std::size_t change = 0; change < view.Changes().size(); ++change)
        AddRow(list, view.ChangeRow(change));
    if (view.Selected()) {
        SelectRow(list, static_cast<int>(*view.Selected()));
        list.EnsureVisible(static_cast<int>(*view.Selected()));
    }
    isFilling = false;
    ShowSelectedChange();
}

void CHistoryDlg::ShowSelectedChange() {
    CListCtrl& list = List(IDC_CHANGED_OBJECTS);
    isFilling = true;
    list.DeleteAllItems();
    for (std::size_t object = 0; object < view.Objects().size(); ++object)
        AddRow(list, view.ObjectRow(object));
    if (!view.Objects().empty()) SelectRow(list, 0);
    isFilling = false;
    GetDlgItem(IDC_OBJECTS_TITLE)->SetWindowText(view.ObjectsTitle());
    GetDlgItem(IDC_OBJECTS_BEFORE)->EnableWindow(view.HasPageBefore());
    GetDlgItem(IDC_OBJECTS_AFTER)->EnableWindow(view.HasPageAfter());
    GetDlgItem(IDC_HISTORY_REMARK)->SetWindowText(view.Remark());
    GetDlgItem(IDC_UNDO_CHANGE)->EnableWindow(view.MayUndo());
    ShowSelectedObject();
}

void CHistoryDlg::ShowSelectedObject() {
    CListCtrl& list = List(IDC_BEFORE_AND_AFTER);
    const int object = List(IDC_CHANGED_OBJECTS).NextSelected(0);
    list.DeleteAllItems();
    if (object < 0) return;
    for (const ComparedRow& row : view.RowsOf(static_cast<std::size_t>(object), AccountNameSoFar))
        AddRow(list,
               std::array{std::string(RowChangeText(row.change)), row.what, row.name, row.before, row.after});
}

// A selection that moves reports the row that it leaves as well.
void CHistoryDlg::OnChangeSelected(Notification& notification) {
    if (isFilling || !List(IDC_CHANGES).IsSelected(notification.row)) return;
    view.Select(static_cast<std::size_t>(notification.row));
    ShowSelectedChange();
}

void CHistoryDlg::OnObjectSelected(Notification& notification) {
    if (!isFilling && List(IDC_CHANGED_OBJECTS).IsSelected(notification.row)) ShowSelectedObject();
}

void CHistoryDlg::OnPageBefore() {
    view.ShowPageBefore();
    ShowSelectedChange();
}

void CHistoryDlg::OnPageAfter() {
    view.ShowPageAfter();
    ShowSelectedChange();
}

void CHistoryDlg::OnUndo() {
    if (!view.MayUndo()) return;
    if (!TakeBack(*this, path, view.Changes()[*view.Selected()], UndoQuestion::kAsk)) return;
    view.Read();
    ShowChanges();
    if (undone) undone();
}

CListCtrl& CHistoryDlg::List(unsigned int id) const {
    return *GetDlgItem<CListCtrl>(id);
}

}  // namespace permora
