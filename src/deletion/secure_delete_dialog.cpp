#include "deletion/secure_delete_dialog.h"

#include <semaphore>
#include <string>

#include "deletion/secure_delete.h"
#include "framework/styles.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/api/threads.h"
#include "platform/folder_files.h"
#include "platform/resources.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr SIZE_T kWorkerStackBytes = 4096;

}  // namespace

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
    // Shared, because the worker's last step wakes who then destroys the run.
    const std::shared_ptr<std::binary_semaphore> hasEnded = std::make_shared<std::binary_semaphore>(0);

  private:
    CSecureDelete& dialog;
    HWND window;
    CStatic& progress;
};

CSecureDelete::CSecureDelete(CWnd* ownerWindow) : CDialog(IDD_SECURE_DELETION, ownerWindow) {}

CSecureDelete::~CSecureDelete() {
    stopRequested = true;
    if (run) run->hasEnded->acquire();
}

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
    auto prepared = std::make_unique<Run>(*this, *progress);
    DWORD error = FolderHandle::OpenCurrent(prepared->folder);
    if (error == ERROR_SUCCESS) {
        SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, TRUE};
        // Closed at once: the run itself tells its end.
        const UniqueHandle worker(
            CreateThread(&attributes, kWorkerStackBytes, SecureDeleteWorker, prepared.get(), 0, nullptr));
        if (!worker) error = GetLastError();
    }
    if (error != ERROR_SUCCESS) {
        ShowSystemErrorBox(GetSafeHwnd(), error);
        EndDialog(kCannotStart);
        return true;
    }
    run = std::move(prepared);
    return true;
}

DWORD WINAPI CSecureDelete::SecureDeleteWorker(LPVOID run) {
    auto& started = *static_cast<Run*>(run);
    const std::shared_ptr<std::binary_semaphore> hasEnded = started.hasEnded;
    started.Work();
    hasEnded->release();
    return 0;
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

void CSecureDelete::OnDestroy() {
    stopRequested = true;
}

}  // namespace permora
