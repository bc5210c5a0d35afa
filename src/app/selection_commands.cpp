// What the main window does with the objects that are selected in it, or in a window of results.
#include <cstddef>
#include <utility>
#include <vector>

#include "app/main_frame.h"
#include "deletion/secure_delete_dialog.h"
#include "framework/long_work.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "security/message_boxes.h"
#include "shares/share_sheet.h"

namespace permora {

// The window took input meanwhile, and what the user is asked next must be about what is selected now.
bool CMainFrame::RememberSelection(const Place& place, RememberedPlace& remembered) {
    if (!Remember(view.Rows().Volume(), place, remembered)) return false;
    const bool isSelected = view.SelectedNames() == place.names;
    if (!isSelected) view.Tell({ERROR_CANCELLED});
    return isSelected;
}

// The editor shows the first selected item and works on all of them.
void CMainFrame::OpenSecurityEditor() {
    items.TellOfSeveral(this, static_cast<std::size_t>(view.List().GetSelectedCount()));
    Place place;
    RememberedPlace remembered;
    if (!view.HoldSelection(place)) return;
    if (place.kind == PlaceKind::kShares)
        EditShareSecurity(this, place, changes, &sheetSize);
    else if (RememberSelection(place, remembered))
        items.Edit(this, remembered, place.names.front());
}

// Objects that are gone are told of, and the editor shows the others.
void CMainFrame::EditResults(CWnd& window, const std::vector<ResultObject>& objects) {
    HeldResults held;
    DoLongWork(window, [&] { held = HoldResults(objects); });
    ItemWindows::TellOfFailures(&window, held.failures);
    if (held.place.items.empty()) return;
    items.TellOfSeveral(&window, held.place.items.size());
    items.Edit(&window, held.place, held.firstName);
}

// The selection is held before the question, and exactly the held objects are deleted.
void CMainFrame::StartSecureDeletion() {
    constexpr const char* kCaption = "Secure deletion";
    if (view.IsShowing(PlaceKind::kDrives) && view.List().GetSelectedCount() > 0) {
        MessageBoxA(GetSafeHwnd(), "Cannot remove disk drive.", kCaption, MB_OK | MB_ICONWARNING);
        return;
    }
    const bool hasSelection = view.List().GetSelectedCount() > 0;
    Place place;
    RememberedPlace remembered;
    if (view.HoldSelection(place) && RememberSelection(place, remembered)) {
        if (!MayDeleteSelection(kCaption)) return;
        DeleteForGood(this, std::move(remembered.items));
    }
    if (hasSelection) view.RefreshList();
}

bool CMainFrame::MayDeleteSelection(const char* caption) const {
    return settings.block.askBeforeSecureDeletion == 0 ||
           MessageBoxA(GetSafeHwnd(),
                       "You will not be able to restore information.\nAre you sure you want to delete the "
                       "selected items?",
                       caption, MB_YESNO | MB_ICONQUESTION) == IDYES;
}

void CMainFrame::StartWizard() {
    Place place;
    RememberedPlace remembered;
    if (!view.HoldSelection(place) || !RememberSelection(place, remembered)) return;
    items.RunWizard(this, remembered);
    if (view.IsShowing(PlaceKind::kFolder)) view.RefreshList();
    view.RedrawWindow();
}

}  // namespace permora
