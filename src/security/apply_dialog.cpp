#include "security/apply_dialog.h"

#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/dacl_builder.h"
#include "security/folder_walk.h"
#include "security/message_boxes.h"

namespace permora {
ApplyDlg::ApplyDlg(CWnd* ownerWindow, ChangeRecorder& changeRecorder, ChangeResults& changeResults)
    : CDialog(IDD_APPLY_TO_TREE, ownerWindow), recorder(changeRecorder), results(changeResults) {}

bool ApplyDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    isStopped = false;
    auto* status = GetDlgItem<CStatic>(IDC_APPLY_PROGRESS);
    if (status == nullptr) {
        ShowErrorBox(GetSafeHwnd(), "Error: cannot initialize dialog box");
        EndDialog(kCannotStart);
        return true;
    }
    // The worker must not ask for the window itself.
    const auto apply = [this, window = GetSafeHwnd(), status] { Apply(window, *status); };
    if (const DWORD error = worker.Start(apply); error != ERROR_SUCCESS) {
        ShowSystemErrorBox(GetSafeHwnd(), error);
        EndDialog(kCannotStart);
    }
    return true;
}

// The worker may still run when the program itself ends.
void ApplyDlg::OnDestroy() {
    isStopped = true;
    worker.Wait();
}

void ApplyDlg::Apply(HWND window, CStatic& status) {
    UniqueLocal<ACL> list;
    ShowOutcome(window, MakeEmptyList(list));
    if (list) {
        const auto showName = [&](const char* name) {
            status.SetWindowText(name);
            status.RedrawWindow();
            return !isStopped;
        };
        // An object that is tried again inherits as if its folder had just been reset.
        const auto reset = [&](const HeldObject& object) {
            FailuresBelow below;
            return object.WriteSecurity(DaclWriteInformation(DaclInheritance::kFromParent),
                                        {.dacl = list.get()}, nullptr, recorder, below);
        };
        const auto resetBelow = [&](const HeldObject& folder, TreeObserver& observer) {
            TreeCounts counts;
            return folder.SetListsBelow(list.get(), TreeListMode::kWrite, recorder, observer, counts);
        };
        WalkFolders(items, places, recorder, showName, {.below = resetBelow, .object = reset}, results);
    }
    EndDialog(list ? IDOK : kCannotStart);
}

}  // namespace permora
