#include "security/apply_dialog.h"

#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/empty_list.h"
#include "security/item_walk.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// Shows each object's bare name. What cannot be changed is passed over in silence, but for what is mounted:
// that is a tree of its own, and who resets a tree may think that it belongs to it.
class StatusObserver : public TreeObserver {
  public:
    StatusObserver(CStatic& field, const std::atomic<bool>& stop) : status(field), isStopped(stop) {}

    bool Begin(const char* name) override {
        status.SetWindowText(name);
        status.RedrawWindow();
        return !isStopped;
    }
    void PassOver(const std::string& path, DWORD error) override { foreign.PassOver(path, error); }

    ForeignParts foreign;

  private:
    CStatic& status;
    const std::atomic<bool>& isStopped;
};

}  // namespace

ApplyDlg::ApplyDlg(CWnd* ownerWindow) : CDialog(IDD_APPLY_TO_TREE, ownerWindow) {}

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

// Only when the program itself ends can the worker still be at work here.
void ApplyDlg::OnDestroy() {
    isStopped = true;
    worker.Wait();
}

void ApplyDlg::Apply(HWND window, CStatic& status) {
    const UniqueLocal<ACL> list = MakeEmptyList(window);
    StatusObserver observer(status, isStopped);
    TreeCounts counts;
    for (const RememberedObject& item : list ? items : std::span<const RememberedObject>()) {
        if (isStopped) break;
        HeldObject folder;
        observer.foreign.SetItem(item.Path());
        if (!FindFolder(window, item, folder)) continue;
        static_cast<void>(folder.SetListsBelow(list.get(), TreeListMode::kWrite, observer, counts));
    }
    if (list) observer.foreign.Tell(window);
    EndDialog(list ? IDOK : kCannotStart);
}

}  // namespace permora
