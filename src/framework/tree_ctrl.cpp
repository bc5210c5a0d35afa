#include "framework/tree_ctrl.h"

#include "framework/styles.h"
#include "framework/tree_native.h"
#include "framework/window_access.h"

namespace permora {

bool CTreeCtrl::Create(CWnd& owner, DWORD style, const Rect& rect, unsigned int id) {
    return WindowAccess::CreateControl(
        *this, owner, {.kind = ControlKind::kTreeView, .id = id, .style = style | WS_CHILD, .rect = rect});
}

void CTreeCtrl::OnDestroy() {
    items = {};
    images.reset();
}

NativeTreeView& CTreeCtrl::Native() const {
    return *WindowAccess::NativeAs<NativeTreeView>(*this);
}

void CTreeCtrl::SetImageList(const CImageList& shown) {
    images = shown.Shared();
    RedrawWindow();
}

void CTreeCtrl::InsertItems(TreeItem above, int place, std::span<const TreeItemLook> looks) {
    const bool isPlace = items.Has(above) && place >= 0 && place <= items.Count(above);
    if (!HasWindow() || !isPlace || looks.empty()) return;
    Native().BeginInsert(above, place, static_cast<int>(looks.size()));
    items.Insert(above, place, looks);
    Native().EndInsert();
}

TreeItem CTreeCtrl::InsertItem(TreeItem above, int place, const TreeItemLook& look) {
    InsertItems(above, place, {&look, 1});
    return items.Child(above, place);
}

void CTreeCtrl::DeleteItems(TreeItem above, int place, int count) {
    if (!HasWindow() || place < 0 || count <= 0 || place + count > items.Count(above)) return;
    Native().BeginDelete(above, place, count);
    items.Delete(above, place, count);
    Native().EndDelete();
}

void CTreeCtrl::SetExpander(TreeItem item, bool hasExpander) {
    if (!HasWindow() || !items.Has(item) || items.Look(item).hasExpander == hasExpander) return;
    items.SetExpander(item, hasExpander);
    Native().ItemChanged(item);
}

TreeItem CTreeCtrl::GetSelectedItem() const {
    return HasWindow() ? Native().Selected() : kNoTreeItem;
}

void CTreeCtrl::SelectItem(TreeItem item) {
    if (HasWindow() && items.Has(item)) Native().Select(item);
}

void CTreeCtrl::Expand(TreeItem item, bool isOpen) {
    if (HasWindow() && items.Has(item)) Native().Expand(item, isOpen);
}

bool CTreeCtrl::IsExpanded(TreeItem item) const {
    return HasWindow() && items.Has(item) && Native().IsExpanded(item);
}

}  // namespace permora
