// ApplyDlg: resets whole folder trees on a worker thread and shows the name of the present object.
#pragma once

#include <atomic>
#include <span>

#include "framework/dialog.h"
#include "framework/worker_thread.h"
#include "platform/held_object.h"
#include "security/change_results.h"

namespace permora {

class ApplyDlg : public CDialog {
  public:
    // What DoModal returns besides IDOK, which means that every tree was walked and `results` has what came
    // of it. Nothing was changed, and the reason has been shown in an error box.
    static constexpr int kCannotStart = 3;

    // Both must outlive the dialog.
    ApplyDlg(CWnd* ownerWindow, ChangeRecorder& changeRecorder, ChangeResults& changeResults);

    // The selected items, and the places among them and below as WalkFolders takes them. Borrowed until
    // DoModal returns.
    std::span<const RememberedObject> items;
    std::span<const ObjectPlace> places;

  protected:
    bool OnInitDialog() override;
    // The user cannot stop a walk: only the worker ends the dialog.
    void OnOK() override {}
    void OnCancel() override {}

  private:
    void OnDestroy() override;
    void Apply(HWND window, CStatic& status);  // on the worker thread

    ChangeRecorder& recorder;
    ChangeResults& results;
    std::atomic<bool> isStopped = false;  // the program ends
    WorkerThread worker;
};

}  // namespace permora
