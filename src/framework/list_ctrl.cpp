#include "framework/list_ctrl.h"

#include "framework/list_native.h"
#include "framework/list_styles.h"
#include "framework/styles.h"
#include "framework/window_access.h"

namespace permora {
namespace {

NativeListView* NativeOf(const CListCtrl& list) {
    return WindowAccess::NativeAs<NativeListView>(list);
}

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
    if (HasWindow() || !owner.HasWindow()) return false;
    const ControlSpec spec{.kind = ControlKind::kListView, .id = id, .style = style | WS_CHILD, .rect = rect};
    WindowAccess::Attach(*this, MakeNativeListView(*this, owner, spec), &owner, id, spec.style);
    if ((style & WS_VISIBLE) != 0) WindowAccess::Native(*this)->SetVisible(true);
    return true;
}

void CListCtrl::InsertColumn(int column, const std::string& header, int width) {
    if (NativeListView* view = NativeOf(*this)) view->InsertColumn(column, {header, width});
}

void CListCtrl::SetColumnText(int column, const std::string& header) {
    if (NativeListView* view = NativeOf(*this)) view->SetColumnHeader(column, header);
}

int CListCtrl::GetColumnWidth(int column) const {
    const NativeListView* view = NativeOf(*this);
    if (view == nullptr || column < 0 || column >= static_cast<int>(view->Columns().size())) return 0;
    return view->Columns()[static_cast<std::size_t>(column)].width;
}

void CListCtrl::SetExtendedStyle(ListStyle style) {
    if (NativeListView* view = NativeOf(*this)) view->SetListStyle(style);
}

void CListCtrl::SetImageList(const CImageList& images, ImageListKind kind) {
    if (NativeListView* view = NativeOf(*this)) view->SetImages(images, kind);
}

void CListCtrl::SetView(ListView view) {
    ModifyStyle(LVS_TYPEMASK, BitsOf(view));
}

ListView CListCtrl::GetView() const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr ? view->View() : ListView::kReport;
}

bool CListCtrl::InsertItem(int row, const std::string& text, int image) {
    NativeListView* view = NativeOf(*this);
    return view != nullptr && view->InsertRow(row, text, image);
}

bool CListCtrl::SetItemText(int row, int column, const std::string& text) {
    NativeListView* view = NativeOf(*this);
    return view != nullptr && view->SetRowText(row, column, text);
}

std::string CListCtrl::GetItemText(int row, int column) const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr ? std::string(view->Rows().Text(row, column)) : std::string();
}

bool CListCtrl::SetItemData(int row, std::intptr_t data) {
    NativeListView* view = NativeOf(*this);
    return view != nullptr && view->SetRowData(row, data);
}

std::intptr_t CListCtrl::GetItemData(int row) const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr ? view->Rows().Data(row) : 0;
}

bool CListCtrl::DeleteItem(int row) {
    NativeListView* view = NativeOf(*this);
    return view != nullptr && view->DeleteRow(row);
}

bool CListCtrl::DeleteAllItems() {
    NativeListView* view = NativeOf(*this);
    if (view == nullptr) return false;
    view->DeleteAllRows();
    return true;
}

int CListCtrl::GetItemCount() const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr ? view->Rows().Count() : 0;
}

int CListCtrl::GetSelectedCount() const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr ? view->Rows().SelectedCount() : 0;
}

bool CListCtrl::IsSelected(int row) const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr && view->Rows().IsSelected(row);
}

bool CListCtrl::SetSelected(int row, bool selected) {
    NativeListView* view = NativeOf(*this);
    return view != nullptr && view->Select(row, selected);
}

int CListCtrl::NextSelected(int from) const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr ? view->Rows().NextSelected(from) : -1;
}

int CListCtrl::GetSelectionMark() const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr ? view->Rows().cursor.mark : -1;
}

void CListCtrl::SetSelectionMark(int row) {
    NativeListView* view = NativeOf(*this);
    if (view == nullptr) return;
    const int mark = view->Rows().Has(row) ? row : -1;
    view->SetCursor({view->Rows().cursor.focus, mark, mark});
}

int CListCtrl::GetFocusedRow() const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr ? view->Rows().cursor.focus : -1;
}

void CListCtrl::SetFocusedRow(int row) {
    NativeListView* view = NativeOf(*this);
    if (view == nullptr || !view->Rows().Has(row)) return;
    const ListCursor cursor = view->Rows().cursor;
    view->SetCursor({row, cursor.mark, cursor.anchor});
    view->EnsureVisible(row);
}

bool CListCtrl::GetCheck(int row) const {
    const NativeListView* view = NativeOf(*this);
    return view != nullptr && view->Rows().IsChecked(row);
}

void CListCtrl::SetCheck(int row, bool checked) {
    if (NativeListView* view = NativeOf(*this)) view->Check(row, checked);
}

void CListCtrl::SortItems(const std::function<bool(std::intptr_t, std::intptr_t)>& isLess) {
    if (NativeListView* view = NativeOf(*this)) view->SortRows(isLess);
}

void CListCtrl::EnsureVisible(int row) {
    NativeListView* view = NativeOf(*this);
    if (view != nullptr && view->Rows().Has(row)) view->EnsureVisible(row);
}

bool CListCtrl::IsItemVisible(int row) const {
    NativeListView* view = NativeOf(*this);
    return view != nullptr && view->Rows().Has(row) && view->IsInView(row);
}

}  // namespace permora
