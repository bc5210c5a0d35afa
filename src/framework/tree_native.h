// The seam of the tree view: the shared half (CTreeCtrl) keeps the items; a back end shows them, and knows
// which are open and which is selected.
#pragma once

#include "framework/native.h"
#include "framework/tree_ctrl.h"

namespace permora {

// What a back end makes of ControlKind::kTreeView; its CWnd is a CTreeCtrl.
class NativeTreeView : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    // Before and after a change of the items below `parent`.
    virtual void BeginInsert(TreeItem parent, int place, int count) = 0;
    virtual void EndInsert() = 0;
    virtual void BeginDelete(TreeItem parent, int place, int count) = 0;
    virtual void EndDelete() = 0;
    virtual void ItemChanged(TreeItem item) = 0;

    virtual TreeItem Selected() const = 0;
    virtual void Select(TreeItem item) = 0;
    virtual void Expand(TreeItem item, bool isOpen) = 0;
    virtual bool IsExpanded(TreeItem item) const = 0;
};

}  // namespace permora
