// CSecureDelete: runs a secure deletion on a worker thread and shows the name that it has come to.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "deletion/deletion_progress.h"
#include "deletion/failed_deletions.h"
#include "framework/dialog.h"
#include "framework/repeated_work.h"
#include "framework/worker_thread.h"
#include "security/results_dialog.h"

namespace permora {

class CSecureDelete : public CDialog {
  public:
    // What DoModal returns beside IDOK, when the worker went through all items, and IDCANCEL, when it was
    // stopped before one of them: nothing was touched, and a box gave the reason.
    static constexpr int kCannotStart = 3;

    // `results`, which outlives the dialog, has what was deleted and what was not once it has ended.
    CSecureDelete(CWnd* ownerWindow, FailedDeletions& results);
    ~CSecureDelete() override;

    // What is to be deleted, below one folder. Set before DoModal, which ends when no worker reads them any
    // more.
    std::vector<DeletionTarget> chosen;

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
    void ShowProgress();

    FailedDeletions& left;  // the worker's while it runs
    std::atomic<bool> stopRequested = false;
    std::atomic<bool> isCancelled = false;  // by Escape
    std::unique_ptr<DeletionProgress> progress;
    RepeatedWork display;
    std::unique_ptr<Run> run;  // what the worker has; null: not started
    WorkerThread worker;
};

// Runs a secure deletion of the selected items of a folder, and then shows what is left of them. Returns the
// dialog's result.
int DeleteForGood(CWnd* owner, std::vector<RememberedObject> chosen);
// Deletes the failed objects of `left` again, which is borrowed, and puts what comes of it there.
TryAgain DeletionAgain(FailedDeletions& left);

}  // namespace permora
