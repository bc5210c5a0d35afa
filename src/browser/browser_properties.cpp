// What the selected rows are: attributes and properties.
#include "browser/attributes_dialog.h"
#include "browser/browser_view.h"
#include "browser/list_presentation.h"
#include "platform/api/shell.h"
#include "security/message_boxes.h"
#include "security/text_conversion.h"

namespace permora {

void BrowserView::EditAttributes() {
    if (driveListShown) {
        ShowInfoBox(GetSafeHwnd(), "Cannot set attributes for disk drive.");
        return;
    }
    const std::span<const LPCSTR> names = GetSelectedNames();
    if (!names.empty() && MayWorkOnRows()) {
        CAttributesDlg dialog(this);
        dialog.names = names;
        dialog.DoModal();
    }
    ReleaseSelection();
}

// What a row stands for, by its full path; a box tells why it cannot be told.
bool BrowserView::FindShownObject(const std::string& name, std::string& path) const {
    if (sharesMode) return FindSharedFolder(name, path);
    if (!MayWorkOnRows()) return false;
    path = PathOfRow(name);
    return true;
}

void BrowserView::ShowProperties() {
    if (list.GetItemCount() == 0) return;
    const int row = list.NextSelected(0);
    if (row < 0) {
        ShowInfoBox(GetSafeHwnd(), kSelectItem);
        return;
    }
    std::string path;
    if (!FindShownObject(list.GetItemText(row, kNameColumn), path)) return;
    std::basic_string<WCHAR> widePath;
    SHObjectProperties(GetSafeHwnd(), SHOP_FILEPATH, AnsiToWide(path, widePath), nullptr);
}

}  // namespace permora
