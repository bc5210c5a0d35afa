#include "deletion/secure_delete_dialog.h"

#include <optional>
#include <string>

#include "deletion/secure_delete.h"
#include "framework/stoppable_work.h"
#include "framework/styles.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {

// The worker's view of the dialog; written before it starts.
class CSecureDelete::Run : public SecureDeleteHost {
  public:
    Run(CSecureDelete& shownDialog, CStatic& label)
        : SecureDeleteHost(shownDialog.stopRequested),
          dialog(shownDialog),
          window(shownDialog.GetSafeHwnd()),
          progress(label) {}

    void BeginEntry(const std::string& name) override {
        progress.SetWindowText(name);
        progress.RedrawWindow();
    }

    // The path is on a line of its own, since the box covers the label.
    void Failed(const Outcome& failure) override {
        if (failure.object.empty()) return ShowOutcome(window, failure);
        std::string text = BoxText(failure);
        if (text.empty()) return;
        const std::string path = trail.PathOf(failure.object);
        if (!IsNamedInBox(failure.step) || path != failure.object)
            text += "\n" + path;  // the text of the system ends with a line break
        ShowErrorBox(window, text.c_str());
    }

    // Asked once; the answer holds for all later files.
    bool MayOverwrite(const std::string& name, const std::vector<OverwriteObstacle>& /*obstacles*/) override {
        if (!mayBeOpenElsewhere) {
            const std::string text =
                "Whether another program has this file open cannot be known:\n\n" + trail.PathOf(name) +
                "\n\nDelete it, and the others of which that cannot be known? No leaves them where they are.";
            mayBeOpenElsewhere =
                MessageBoxA(window, text.c_str(), "Secure deletion", MB_YESNO | MB_ICONQUESTION) == IDYES;
        }
        return *mayBeOpenElsewhere;
    }

    void Work() {
        const StoppableWork stoppable([this] { dialog.stopRequested = true; });
        for (RememberedObject& item : dialog.chosen) {
            if (stopRequested) {
                dialog.EndDialog(IDCANCEL);
                return;
            }
            BeginEntry(item.Path());
            SecureDeleteItem(*this, item);
            item = {};  // a file that is remembered keeps its space
        }
        dialog.EndDialog(dialog.isCancelled ? IDCANCEL : IDOK);
    }

  private:
    CSecureDelete& dialog;
    HWND window;
    CStatic& progress;
    std::optional<bool> mayBeOpenElsewhere;
};

CSecureDelete::CSecureDelete(CWnd* ownerWindow) : CDialog(IDD_SECURE_DELETION, ownerWindow) {}

CSecureDelete::~CSecureDelete() = default;

const MessageMap& CSecureDelete::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CSecureDelete>(
        CDialog::GetMessageMap(), {
                                      {IDC_STOP_DELETION, Notify::kClicked, &CSecureDelete::Stop},
                                  });
    return kMap;
}

bool CSecureDelete::OnInitDialog() {
    CDialog::OnInitDialog();
    stopRequested = isCancelled = false;
    auto* progress = GetDlgItem<CStatic>(IDC_DELETION_PROGRESS);
    if (progress == nullptr) {
        ShowErrorBox(GetSafeHwnd(), "Error: cannot initialize dialog box");
        EndDialog(kCannotStart);
        return false;
    }
    run = std::make_unique<Run>(*this, *progress);
    if (const DWORD error = worker.Start([this] { run->Work(); }); error != ERROR_SUCCESS) {
        ShowSystemErrorBox(GetSafeHwnd(), error);
        EndDialog(kCannotStart);
    }
    return true;
}

void CSecureDelete::Stop() {
    if (CWnd* button = GetDlgItem(IDC_STOP_DELETION)) {
        button->ModifyStyle(0, WS_DISABLED);
        button->RedrawWindow();
    }
    stopRequested = true;
}

void CSecureDelete::OnCancel() {
    isCancelled = true;
    Stop();
}

// The worker shows texts in the window until its end.
void CSecureDelete::OnDestroy() {
    stopRequested = true;
    worker.Wait();
}

}  // namespace permora
