#include "security/apply_dialog.h"

#include <string>

#include "platform/api/messages.h"
#include "platform/api/threads.h"
#include "platform/resources.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "security/tree_apply.h"

namespace permora {
namespace {

constexpr SIZE_T kWorkerStackBytes = 4096;

// Shows each object's bare name. What cannot be changed is passed over in silence.
class StatusObserver : public TreeObserver {
  public:
    explicit StatusObserver(CStatic& field) : status(field) {}

    bool Begin(const char* name) override {
        status.SetWindowText(name);
        status.RedrawWindow();
        return true;
    }
    void PassOver(const std::string& /*path*/, DWORD /*error*/) override {}

  private:
    CStatic& status;
};

}  // namespace

ApplyDlg::ApplyDlg(CWnd* ownerWindow) : CDialog(IDD_APPLY_TO_TREE, ownerWindow) {}

bool ApplyDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    window = GetSafeHwnd();
    status = GetDlgItem<CStatic>(IDC_APPLY_PROGRESS);
    if (status == nullptr) {
        ShowErrorBox(window, "Error: cannot initialize dialog box");
        EndDialog(kCannotStart);
        return true;
    }
    SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, TRUE};
    // Closed at once: the dialog's end is the only sign that the worker has finished.
    const UniqueHandle worker(
        CreateThread(&attributes, kWorkerStackBytes, ApplyToTreeWorker, this, 0, nullptr));
    if (!worker) {
        ShowSystemErrorBox(window, GetLastError());
        EndDialog(kCannotStart);
    }
    return true;
}

DWORD WINAPI ApplyDlg::ApplyToTreeWorker(LPVOID dialog) {
    static_cast<ApplyDlg*>(dialog)->Apply();
    return 0;
}

void ApplyDlg::Apply() {
    StatusObserver observer(*status);
    TreeCounts counts;
    const TreeApplyResult result = ApplyToTrees(window, names, TreeListMode::kWrite, observer, counts);
    EndDialog(result == TreeApplyResult::kDone ? IDOK : kCannotStart);
}

}  // namespace permora
