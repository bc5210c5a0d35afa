#include "results/page_list.h"

#include "framework/list_styles.h"
#include "framework/styles.h"

namespace permora {

bool PageList::Create(CWnd& owner, unsigned int id) {
    if (!CListCtrl::Create(owner, WS_TABSTOP | LVS_REPORT | LVS_SHOWSELALWAYS, {}, id)) return false;
    int column = 0;
    for (const ResultColumn& each : page.Columns())
        InsertColumn(column++, each.title, each.width);
    SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    SetTexts(this);
    return true;
}

void PageList::TakeRows() {
    const int before = GetItemCount();
    AppendItems(static_cast<int>(page.Count()) - before);
    if (before == 0 && GetItemCount() > 0 && HasFocus()) SetFocusedRow(0);
}

void PageList::SortBy(int column) {
    sorting = OrderAfterClick(sorting, column);
    ShowSortMark(column, sorting->direction);
    SortAgain();
    if (GetFocusedRow() >= 0) EnsureVisible(GetFocusedRow());
}

void PageList::SortAgain() {
    if (!sorting) return;
    const bool isUp = sorting->direction == SortOrder::kUp;
    SortItems(OrderOfPage(page, static_cast<std::size_t>(sorting->column),
                          isUp ? ResultDirection::kUp : ResultDirection::kDown));
}

std::vector<ResultObject> PageList::SelectedObjects() const {
    std::vector<ResultObject> objects;
    for (int row = NextSelected(0); row >= 0; row = NextSelected(row + 1))
        if (auto object = page.Object(static_cast<std::size_t>(GetItemData(row))))
            objects.push_back(std::move(*object));
    return objects;
}

std::optional<ResultObject> PageList::FirstSelected() const {
    const int row = NextSelected(0);
    return row < 0 ? std::nullopt : page.Object(static_cast<std::size_t>(GetItemData(row)));
}

std::string PageList::Text(std::intptr_t data, int column) const {
    return page.Text(static_cast<std::size_t>(data), static_cast<std::size_t>(column));
}

bool PageList::IsInOrderOfArrival() const {
    if (!sorting) return true;
    const ResultColumn& column = page.Columns()[static_cast<std::size_t>(sorting->column)];
    return column.order == ColumnOrder::kArrival && sorting->direction == SortOrder::kUp;
}

int PageList::Indent(std::intptr_t data) const {
    return IsInOrderOfArrival() ? static_cast<int>(page.Indent(static_cast<std::size_t>(data))) : 0;
}

}  // namespace permora
