// What the main window does with the objects that are selected in it, or in a window of results.
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "app/main_frame.h"
#include "app/settings_store.h"
#include "deletion/secure_delete_dialog.h"
#include "editor/multi_selection_notice.h"
#include "editor/security_sheet.h"
#include "framework/long_work.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "security/message_boxes.h"
#include "security/place_remembering.h"
#include "shares/share_sheet.h"
#include "wizard/security_wizard.h"

namespace permora {

// The editor shows the first selected item and works on all of them.
void CMainFrame::OpenSecurityEditor() {
    TellOfSeveral(*this, static_cast<std::size_t>(view.List().GetSelectedCount()));
    Place place;
    if (!view.HoldSelection(place)) return;
    if (place.kind == PlaceKind::kShares)
        EditShareSecurity(this, place, changes, &sheetSize);
    else
        EditItems(*this, RememberPlaceFor(this, place), place.names.front());
}

void CMainFrame::EditItems(CWnd& window, const RememberedPlace& place, const std::string& name) {
    std::uint8_t asks = LoadAskBeforeLosses() ? 1 : 0;
    const std::uint8_t asked = asks;
    EditSecurity(&window, place, name, changes, {&sheetSize, &asks});
    if (asks == asked) return;
    if (const DWORD error = StoreAskBeforeLosses(asks != 0); error != ERROR_SUCCESS)
        ShowErrorWithSystemText(window.GetSafeHwnd(), "Error: saving settings", error);
}

void CMainFrame::TellOfSeveral(CWnd& window, std::size_t count) {
    if (count < 2 || settings.block.showIntermediateInfo == 0) return;
    CInfoDlg1 notice(&window);
    notice.showIntermediateInfo = &settings.block.showIntermediateInfo;
    notice.DoModal();
}

// Objects that are gone are told of, and the editor shows the others.
void CMainFrame::EditResults(CWnd& window, const std::vector<ResultObject>& objects) {
    HeldResults held;
    DoLongWork(window, [&] { held = HoldResults(objects); });
    if (!held.failures.empty()) {
        const Outcome& first = held.failures.front();
        const std::size_t more = held.failures.size() - 1;
        std::string text = first.object + ": " + LineText(first);
        if (more > 0) text += "\nand " + std::to_string(more) + " more";
        ShowErrorBox(window.GetSafeHwnd(), text.c_str());
    }
    if (held.place.items.empty()) return;
    TellOfSeveral(window, held.place.items.size());
    EditItems(window, held.place, held.firstName);
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
    if (view.HoldSelection(place)) {
        std::vector<RememberedObject> chosen = RememberPlaceFor(this, place).items;
        if (!MayDeleteSelection(kCaption)) return;
        DeleteForGood(this, std::move(chosen));
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
    if (!view.HoldSelection(place)) return;
    RunSecurityWizard(this, place,
                      {.askBeforeSecureDeletion = settings.block.askBeforeSecureDeletion != 0,
                       .showIntermediateInfo = &settings.block.showIntermediateInfo},
                      changes);
    if (view.IsShowing(PlaceKind::kFolder)) view.RefreshList();
    view.RedrawWindow();
}

}  // namespace permora
