// The seam of the list view: the shared half (CListCtrl) keeps the rows, a back end shows them.
#pragma once

#include "framework/list_ctrl.h"
#include "framework/native.h"

namespace permora {

// Shows a list, whose contents it reads. Changes must be shown soon, but not at once: callers change many
// rows one after the other.
class ListDisplay {
  public:
    virtual ~ListDisplay() = default;
    virtual void RowsChanged() = 0;  // their number or order
    virtual void RowTextChanged(int row) = 0;
    virtual void RowStateChanged(int row) = 0;  // selected or checked
    virtual void AppearanceChanged() = 0;       // view, images, check boxes, columns
    virtual void FocusRowChanged(int before) = 0;
    virtual void EnsureVisible(int row) = 0;
    virtual bool IsInView(int row) = 0;  // at least a part of it
};

// What a back end makes of ControlKind::kListView; its CWnd is a CListCtrl.
class NativeListView : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    using NativeWindow::ReportNotification;
    virtual ListDisplay& Display() const = 0;
};

}  // namespace permora
