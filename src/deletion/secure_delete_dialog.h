// CSecureDelete: runs a secure deletion on a worker thread and shows the name that it has come to.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "framework/dialog.h"
#include "framework/worker_thread.h"
#include "platform/remembered_object.h"

namespace permora {

class CSecureDelete : public CDialog {
  public:
    // What DoModal returns beside IDOK, when the worker went through all items, and IDCANCEL, when it was
    // stopped before one of them: nothing was touched, and a box gave the reason.
    static constexpr int kCannotStart = 3;

    explicit CSecureDelete(CWnd* ownerWindow = nullptr);
    ~CSecureDelete() override;

    // The selected items of a folder. Set before DoModal, which ends when no worker reads them any more.
    std::vector<RememberedObject> chosen;

  protected:
    bool OnInitDialog() override;
    // Escape stops the worker, like the button; the dialog stays until it has ended.
    void OnCancel() override;
    void OnOK() override {}
    void OnDestroy() override;  // stops the worker, if it still runs, at its next stop point
    const MessageMap& GetMessageMap() const override;

  private:
    class Run;

    void Stop();

    std::atomic<bool> stopRequested = false;
    std::atomic<bool> isCancelled = false;  // by Escape
    std::unique_ptr<Run> run;               // what the worker has; null: not started
    WorkerThread worker;
};

}  // namespace permora
