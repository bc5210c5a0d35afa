// What the selected rows are: their attributes.
#include "browser/attributes_dialog.h"
#include "browser/browser_view.h"
#include "framework/frame_window.h"
#include "platform/api/errors.h"
#include "security/message_boxes.h"

namespace permora {

// The rows' names stand relative to the folder shown. When it is gone, each call tells so; in another they
// would mean other files.
void BrowserView::EditAttributes() {
    if (driveListShown) {
        ShowInfoBox(GetSafeHwnd(), "Cannot set attributes for disk drive.");
        return;
    }
    const LPCSTR* names = GetSelectedNames();
    if (names != nullptr) {
        if (!ReturnToShownFolder() && GetLastError() == ERROR_CANT_RESOLVE_FILENAME) {
            ShowLastErrorBox(GetSafeHwnd());
        } else {
            CAttributesDlg dialog(this);
            dialog.names = {names, static_cast<std::size_t>(list.GetSelectedCount())};
            dialog.DoModal();
        }
    }
    ReleaseSelection();
}

}  // namespace permora
