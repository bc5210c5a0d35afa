#include "deletion/secure_delete_dialog.h"

#include <string>

#include "deletion/secure_delete.h"
#include "framework/stoppable_work.h"
#include "framework/styles.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/folder_files.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {

// What the worker has of the dialog; written before it starts.
class CSecureDelete::Run : public SecureDeleteHost {
  public:
    Run(CSecureDelete& shownDialog, CStatic& label)
        : SecureDeleteHost(shownDialog.stopRequested),
          dialog(shownDialog),
          window(shownDialog.GetSafeHwnd()),
          progress(label) {}

    HWND Window() const override { return window; }
    void BeginEntry(const std::string& name) override {
        progress.SetWindowText(name);
        progress.RedrawWindow();
    }
    void Failed(const DeletionFailure& failure) override {
        ShowErrorWithSystemText(window, BoxPrefix(failure).c_str(), failure.error);
    }

    void Work() {
        const StoppableWork stoppable([this] { dialog.stopRequested = true; });
        for (const char* name : dialog.names) {
            if (stopRequested) {
                dialog.EndDialog(IDCANCEL);
                return;
            }
            BeginEntry(name);
            SecureDeleteItem(*this, folder, name);
        }
        dialog.EndDialog(dialog.isCancelled ? IDCANCEL : IDOK);
    }

    FolderHandle folder;  // in which the items are

  private:
    CSecureDelete& dialog;
    HWND window;
    CStatic& progress;
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
    DWORD error = FolderHandle::OpenCurrent(run->folder);
    if (error == ERROR_SUCCESS) error = worker.Start([this] { run->Work(); });
    if (error != ERROR_SUCCESS) {
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
