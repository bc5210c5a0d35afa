#include "app/item_windows.h"

#include <cstdint>

#include "app/settings_store.h"
#include "editor/multi_selection_notice.h"
#include "editor/security_sheet.h"
#include "platform/api/errors.h"
#include "security/message_boxes.h"
#include "security/missing_rights.h"
#include "wizard/security_wizard.h"

namespace permora {
namespace {

HWND HandleOf(CWnd* window) {
    return window != nullptr ? window->GetSafeHwnd() : nullptr;
}

}  // namespace

void ItemWindows::Edit(CWnd* owner, const RememberedPlace& place, const std::string& name) {
    std::uint8_t asks = LoadAskBeforeLosses() ? 1 : 0;
    const std::uint8_t asked = asks;
    EditSecurity(owner, place, name, changes, {&sheetSize, &asks});
    if (asks == asked) return;
    if (const DWORD error = StoreAskBeforeLosses(asks != 0); error != ERROR_SUCCESS)
        ShowErrorWithSystemText(HandleOf(owner), "Error: saving settings", error);
}

void ItemWindows::RunWizard(CWnd* owner, const RememberedPlace& place) {
    RunSecurityWizard(owner, place,
                      {.askBeforeSecureDeletion = settings.block.askBeforeSecureDeletion != 0,
                       .showIntermediateInfo = &settings.block.showIntermediateInfo},
                      changes);
}

void ItemWindows::TellOfSeveral(CWnd* owner, std::size_t count) {
    if (count < 2 || settings.block.showIntermediateInfo == 0) return;
    CInfoDlg1 notice(owner);
    notice.showIntermediateInfo = &settings.block.showIntermediateInfo;
    notice.DoModal();
}

void ItemWindows::TellOfFailures(CWnd* owner, const Outcomes& failures) {
    if (failures.empty()) return;
    for (const Outcome& failure : failures)
        NoteFailure(failure.code);
    const Outcome& first = failures.front();
    const std::size_t more = failures.size() - 1;
    std::string text = first.object + ": " + LineText(first);
    if (more > 0) text += "\nand " + std::to_string(more) + " more";
    ShowErrorBox(HandleOf(owner), text.c_str());
}

}  // namespace permora
