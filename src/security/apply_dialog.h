// ApplyDlg: resets whole folder trees on a worker thread and shows the name of the present object.
#pragma once

#include <atomic>
#include <span>

#include "framework/dialog.h"
#include "framework/worker_thread.h"
#include "platform/held_object.h"

namespace permora {

class ApplyDlg : public CDialog {
  public:
    // What DoModal returns besides IDOK, which means that every tree was walked. Nothing was changed, and the
    // reason has been shown in an error box.
    static constexpr int kCannotStart = 3;

    // `changeRecorder` must outlive the dialog.
    ApplyDlg(CWnd* ownerWindow, ChangeRecorder& changeRecorder);

    // The selected items, borrowed until DoModal returns; only folders are walked.
    std::span<const RememberedObject> items;

  protected:
    bool OnInitDialog() override;
    // The user cannot stop a walk: only the worker ends the dialog.
    void OnOK() override {}
    void OnCancel() override {}

  private:
    void OnDestroy() override;
    void Apply(HWND window, CStatic& status);  // on the worker thread

    ChangeRecorder& recorder;
    std::atomic<bool> isStopped = false;  // the program ends
    WorkerThread worker;
};

}  // namespace permora
