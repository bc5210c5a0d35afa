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

const ListRows& CListCtrl::Rows() const {
    static const ListRows kNone;
    const NativeListView* view = NativeOf(*this);
    return view != nullptr ? view->Rows() : kNone;
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

bool CListCtrl::SetItemData(int row, std::intptr_t data) {
    NativeListView* view = NativeOf(*this);
    return view != nullptr && view->SetRowData(row, data);
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

bool CListCtrl::SetSelected(int row, bool selected) {
    NativeListView* view = NativeOf(*this);
    return view != nullptr && view->Select(row, selected);
}

void CListCtrl::SetSelectionMark(int row) {
    const int mark = Rows().Has(row) ? row : -1;
    if (NativeListView* view = NativeOf(*this)) view->SetCursor({Rows().cursor.focus, mark, mark});
}

void CListCtrl::SetFocusedRow(int row) {
    if (!Rows().Has(row)) return;
    const ListCursor cursor = Rows().cursor;
    NativeListView* view = NativeOf(*this);
    view->SetCursor({row, cursor.mark, cursor.anchor});
    view->EnsureVisible(row);
}

void CListCtrl::SetCheck(int row, bool checked) {
    if (NativeListView* view = NativeOf(*this)) view->Check(row, checked);
}

void CListCtrl::SortItems(const std::function<bool(std::intptr_t, std::intptr_t)>& isLess) {
    if (NativeListView* view = NativeOf(*this)) view->SortRows(isLess);
}

void CListCtrl::EnsureVisible(int row) {
    if (Rows().Has(row)) NativeOf(*this)->EnsureVisible(row);
}

bool CListCtrl::IsItemVisible(int row) const {
    return Rows().Has(row) && NativeOf(*this)->IsInView(row);
}

}  // namespace permora
