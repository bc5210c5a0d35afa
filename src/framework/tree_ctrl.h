// The tree view: items below items, which open and close.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "framework/images.h"
#include "framework/tree_items.h"
#include "framework/window.h"

namespace permora {

class NativeTreeView;

// Tells its parent what the user does; what the program does is not told. The row of a notification is the
// item:
//   kSelectionChanged  another item is selected (TVN_SELCHANGED)
//   kItemChanged       the item was opened or closed (TVN_ITEMEXPANDED); it may have nothing below it yet
//   kClick             the item was clicked (NM_CLICK)
//   kRightClick        the menu of the item is wanted at `point`; the item is not selected (NM_RCLICK)
//   kKeyDown           of `key`; when a handler takes it, the tree does nothing (TVN_KEYDOWN)
class CTreeCtrl : public CWnd {
  public:
    CTreeCtrl() = default;
    ~CTreeCtrl() override { DestroyWindow(); }

    // As the child of `owner`. Its window text is its name for assistive technology.
    bool Create(CWnd& owner, DWORD style, const Rect& rect, unsigned int id);
    void SetImageList(const CImageList& images);

    const TreeItems& Items() const { return items; }
    // Before the item at `place` below `above`. Nothing happens when there is no such place.
    void InsertItems(TreeItem above, int place, std::span<const TreeItemLook> looks);
    // The same of one, which is returned.
    TreeItem InsertItem(TreeItem above, int place, const TreeItemLook& look);
    // If the selected item is among them, one beside them is selected.
    void DeleteItems(TreeItem above, int place, int count);
    void SetExpander(TreeItem item, bool hasExpander);

    // The selected item also has the keyboard's focus; kNoTreeItem: none.
    TreeItem GetSelectedItem() const;
    void SelectItem(TreeItem item);  // and brings it into view
    void Expand(TreeItem item, bool isOpen);
    bool IsExpanded(TreeItem item) const;

    // ---- For the back end ----

    const CImageList::Images* Images() const { return images.get(); }  // null: none given

  protected:
    void OnDestroy() override;  // the items go with the window

  private:
    NativeTreeView& Native() const;  // only while there is a window

    TreeItems items;
    std::shared_ptr<CImageList::Images> images;
};

}  // namespace permora
