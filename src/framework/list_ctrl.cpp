#include "framework/list_ctrl.h"

#include <algorithm>

#include "framework/column_widths.h"
#include "framework/list_native.h"
#include "framework/list_styles.h"
#include "framework/styles.h"
#include "framework/window_access.h"

namespace permora {
namespace {

DWORD BitsOf(ListView view) {
    switch (view) {
        case ListView::kIcons:
            return LVS_ICON;
        case ListView::kSmallIcons:
            return LVS_SMALLICON;
        case ListView::kList:
            return LVS_LIST;
        case ListView::kReport:
            break;
    }
    return LVS_REPORT;
}

}  // namespace

bool CListCtrl::Create(CWnd& owner, DWORD style, const Rect& rect, unsigned int id) {
    return WindowAccess::CreateControl(
        *this, owner, {.kind = ControlKind::kListView, .id = id, .style = style | WS_CHILD, .rect = rect});
}

void CListCtrl::OnDestroy() {
    rows = {};
    columns.clear();
    emptyText.clear();
    hasOwnWidths = false;
    sortedColumn = -1;
    extendedStyle = ListStyle::kNone;
    normalImages.reset();
    smallImages.reset();
}

NativeListView& CListCtrl::Native() const {
    return *WindowAccess::NativeAs<NativeListView>(*this);
}

ListDisplay& CListCtrl::Display() const {
    return Native().Display();
}

// ---- Columns and looks ----

bool CListCtrl::HasColumn(int column) const {
    return column >= 0 && column < static_cast<int>(columns.size());
}

void CListCtrl::InsertColumn(int column, const std::string& header, int width) {
    if (!HasWindow()) return;
    const int place = std::clamp(column, 0, static_cast<int>(columns.size()));
    columns.insert(columns.begin() + place, {header, width, width});
    Display().AppearanceChanged();
}

void CListCtrl::DeleteColumn(int column) {
    if (!HasColumn(column)) return;
    columns.erase(columns.begin() + column);
    Display().AppearanceChanged();
}

void CListCtrl::SetColumnText(int column, const std::string& header) {
    if (!HasColumn(column)) return;
    columns[static_cast<std::size_t>(column)].header = header;
    Display().AppearanceChanged();
}

void CListCtrl::ShowSortMark(int column, SortOrder order) {
    if (!HasWindow()) return;
    sortedColumn = HasColumn(column) ? column : -1;
    sortOrder = order;
    Display().AppearanceChanged();
}

void CListCtrl::SetColumnWidth(int column, int width) {
    if (!HasColumn(column)) return;
    hasOwnWidths = true;
    columns[static_cast<std::size_t>(column)].width = std::max(width, 0);
    Display().AppearanceChanged();
}

void CListCtrl::FitColumnsAgain() {
    hasOwnWidths = false;
    Display().AppearanceChanged();
}

void CListCtrl::FitColumnsTo(std::span<const int> texts, int room) {
    std::vector<ColumnNeed> needs;
    for (std::size_t i = 0; i < columns.size(); ++i)
        needs.push_back({.given = columns[i].given, .text = texts[i]});
    FitColumns(needs, room);
    for (std::size_t i = 0; i < columns.size(); ++i)
        columns[i].width = needs[i].width;
}

void CListCtrl::SetExtendedStyle(ListStyle style) {
    if (!HasWindow()) return;
    extendedStyle = style;
    Display().AppearanceChanged();
}

bool CListCtrl::HasExtendedStyle(ListStyle bit) const {
    return (static_cast<unsigned int>(extendedStyle) & static_cast<unsigned int>(bit)) != 0;
}

bool CListCtrl::IsSingleSelection() const {
    return (GetStyle() & LVS_SINGLESEL) != 0;
}

void CListCtrl::SetImageList(const CImageList& images, ImageListKind kind) {
    if (!HasWindow()) return;
    (kind == ImageListKind::kNormal ? normalImages : smallImages) = images.Shared();
    Display().AppearanceChanged();
}

const CImageList::Images* CListCtrl::Images() const {
    return GetView() == ListView::kIcons ? normalImages.get() : smallImages.get();
}

void CListCtrl::SetView(ListView view) {
    ModifyStyle(LVS_TYPEMASK, BitsOf(view));
}

ListView CListCtrl::GetView() const {
    for (const ListView view : {ListView::kIcons, ListView::kSmallIcons, ListView::kList})
        if (HasWindow() && (GetStyle() & LVS_TYPEMASK) == BitsOf(view)) return view;
    return ListView::kReport;
}

// ---- Rows. There are none while there is no window. ----

bool CListCtrl::InsertItem(int row, const std::string& text, int image) {
    if (!HasWindow() || !rows.Insert(row, text, image, static_cast<int>(columns.size()))) return false;
    Display().RowsChanged();
    return true;
}

void CListCtrl::AppendItems(int count) {
    if (!HasWindow() || count <= 0) return;
    rows.Append(count);
    Display().RowsChanged();
}

bool CListCtrl::SetItemText(int row, int column, const std::string& text) {
    if (!rows.Has(row) || (column != 0 && !HasColumn(column))) return false;
    if (rows.SetText(row, column, text)) Display().RowTextChanged(row);
    return true;
}

bool CListCtrl::DeleteItem(int row) {
    if (!rows.Delete(row)) return false;
    Display().RowsChanged();
    return true;
}

bool CListCtrl::DeleteAllItems() {
    if (!HasWindow()) return false;
    if (rows.Count() == 0) return true;
    rows.Clear();
    Display().RowsChanged();
    return true;
}

void CListCtrl::SetEmptyText(const std::string& text) {
    if (!HasWindow() || text == emptyText) return;
    emptyText = text;
    Display().AppearanceChanged();
}

void CListCtrl::SortItems(const std::function<bool(std::intptr_t, std::intptr_t)>& isLess) {
    if (!HasWindow()) return;
    rows.Sort(isLess);
    Display().RowsChanged();
}

bool CListCtrl::SetSelected(int row, bool selected) {
    if (!rows.Has(row)) return false;
    if (selected && IsSingleSelection()) {
        const int before = rows.NextSelected(0);
        if (before >= 0 && before != row) SetSelected(before, false);
        // The keyboard continues from the selected row.
        if (rows.Has(row)) SetCursor({row, rows.cursor.mark, row});
    }
    if (!rows.SetSelected(row, selected)) return rows.Has(row);
    ReportChangeOf(row);
    return true;
}

void CListCtrl::SetCheck(int row, bool checked) {
    if (rows.SetChecked(row, checked)) ReportChangeOf(row);
}

void CListCtrl::SetCursor(const ListCursor& cursor) {
    const int before = rows.cursor.focus;
    rows.cursor = cursor;
    if (before != cursor.focus) Display().FocusRowChanged(before);
}

void CListCtrl::SetSelectionMark(int row) {
    const int mark = rows.Has(row) ? row : -1;
    if (HasWindow()) SetCursor({rows.cursor.focus, mark, mark});
}

void CListCtrl::SetFocusedRow(int row) {
    if (!rows.Has(row)) return;
    SetCursor({row, rows.cursor.mark, rows.cursor.anchor});
    Display().EnsureVisible(row);
}

void CListCtrl::EnsureVisible(int row) {
    if (rows.Has(row)) Display().EnsureVisible(row);
}

bool CListCtrl::IsItemVisible(int row) const {
    return rows.Has(row) && Display().IsInView(row);
}

// ---- Reports ----

void CListCtrl::ReportChangeOf(int row) {
    Display().RowStateChanged(row);
    Notification notification{.code = Notify::kItemChanged, .row = row};
    Native().ReportNotification(notification);
}

bool CListCtrl::ReportRow(Notify code, int row, Point client) {
    Notification notification{.code = code, .row = row, .point = client};
    return Native().ReportNotification(notification);
}

bool CListCtrl::ReportKey(unsigned int virtualKey) {
    Notification notification{.code = Notify::kKeyDown, .row = rows.cursor.focus, .key = virtualKey};
    return Native().ReportNotification(notification);
}

void CListCtrl::ReportColumnClick(int column) {
    Notification notification{.code = Notify::kColumnClick, .column = column};
    Native().ReportNotification(notification);
}

void CListCtrl::ReportHeaderMenu(Point client) {
    Notification notification{.code = Notify::kHeaderMenu, .point = client};
    Native().ReportNotification(notification);
}

std::string CListCtrl::AskInfoTip(int row) {
    Notification notification{.code = Notify::kInfoTip, .row = row};
    Native().ReportNotification(notification);
    return notification.tip;
}

}  // namespace permora
