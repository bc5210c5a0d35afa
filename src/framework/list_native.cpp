#include "framework/list_native.h"

#include <algorithm>

#include "framework/list_styles.h"

namespace permora {

bool NativeListView::HasStyle(ListStyle bit) const {
    return (static_cast<unsigned int>(listStyle) & static_cast<unsigned int>(bit)) != 0;
}

bool NativeListView::IsSingleSelection() const {
    return (style & LVS_SINGLESEL) != 0;
}

ListView NativeListView::View() const {
    switch (style & LVS_TYPEMASK) {
        case LVS_ICON:
            return ListView::kIcons;
        case LVS_SMALLICON:
            return ListView::kSmallIcons;
        case LVS_LIST:
            return ListView::kList;
        default:
            return ListView::kReport;
    }
}

const CImageList::Images* NativeListView::Images() const {
    return View() == ListView::kIcons ? normalImages.get() : smallImages.get();
}

bool NativeListView::InsertRow(int row, const std::string& text, int image) {
    if (!rows.Insert(row, text, image, static_cast<int>(columns.size()))) return false;
    OnRowsChanged();
    return true;
}

bool NativeListView::SetRowText(int row, int column, const std::string& text) {
    if (!rows.Has(row) || column < 0 || column >= std::max(static_cast<int>(columns.size()), 1)) return false;
    if (rows.SetText(row, column, text)) OnRowTextChanged(row);
    return true;
}

bool NativeListView::DeleteRow(int row) {
    if (!rows.Delete(row)) return false;
    OnRowsChanged();
    return true;
}

void NativeListView::DeleteAllRows() {
    if (rows.Count() == 0) return;
    rows.Clear();
    OnRowsChanged();
}

void NativeListView::SortRows(const std::function<bool(std::intptr_t, std::intptr_t)>& isLess) {
    rows.Sort(isLess);
    OnRowsChanged();
}

void NativeListView::InsertColumn(int column, const ListColumn& made) {
    const int place = std::clamp(column, 0, static_cast<int>(columns.size()));
    columns.insert(columns.begin() + place, made);
    OnColumnsChanged();
}

void NativeListView::SetColumnHeader(int column, const std::string& header) {
    if (column < 0 || column >= static_cast<int>(columns.size())) return;
    columns[static_cast<std::size_t>(column)].header = header;
    OnColumnsChanged();
}

void NativeListView::SetColumnWidth(int column, int width) {
    if (column < 0 || column >= static_cast<int>(columns.size())) return;
    columns[static_cast<std::size_t>(column)].width = std::max(width, 0);
    OnColumnsChanged();
}

void NativeListView::SetListStyle(ListStyle changed) {
    listStyle = changed;
    OnAppearanceChanged();
}

void NativeListView::SetImages(const CImageList& images, ImageListKind kind) {
    (kind == ImageListKind::kNormal ? normalImages : smallImages) = images.Shared();
    OnAppearanceChanged();
}

bool NativeListView::Select(int row, bool selected) {
    if (!rows.Has(row)) return false;
    if (selected && IsSingleSelection()) {
        const int before = rows.NextSelected(0);
        if (before >= 0 && before != row) Select(before, false);
        // The keyboard continues from the selected row.
        if (rows.Has(row)) SetCursor({row, rows.cursor.mark, row});
    }
    if (!rows.SetSelected(row, selected)) return rows.Has(row);
    OnRowStateChanged(row);
    ReportItemChanged(row);
    return true;
}

bool NativeListView::Check(int row, bool checked) {
    if (!rows.SetChecked(row, checked)) return false;
    OnRowStateChanged(row);
    ReportItemChanged(row);
    return true;
}

void NativeListView::SetCursor(const ListCursor& cursor) {
    const int before = rows.cursor.focus;
    rows.cursor = cursor;
    if (before != cursor.focus) OnFocusRowChanged(before);
}

bool NativeListView::ReportRow(Notify code, int row, Point client) {
    Notification notification{.code = code, .row = row, .point = client};
    return ReportNotification(notification);
}

bool NativeListView::ReportKey(unsigned int virtualKey) {
    Notification notification{.code = Notify::kKeyDown, .row = rows.cursor.focus, .key = virtualKey};
    return ReportNotification(notification);
}

void NativeListView::ReportColumnClick(int column) {
    Notification notification{.code = Notify::kColumnClick, .column = column};
    ReportNotification(notification);
}

std::string NativeListView::AskInfoTip(int row) {
    Notification notification{.code = Notify::kInfoTip, .row = row};
    ReportNotification(notification);
    return notification.tip;
}

void NativeListView::ReportItemChanged(int row) {
    Notification notification{.code = Notify::kItemChanged, .row = row};
    ReportNotification(notification);
}

}  // namespace permora
