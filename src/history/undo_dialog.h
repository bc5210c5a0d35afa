// Taking a change back in the window: the question, the dialog that runs it, and what it came to.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "framework/dialog.h"
#include "framework/worker_thread.h"
#include "history/history.h"
#include "history/undo_report.h"

namespace permora {

// Whether the user is asked first, or has said yes already.
enum class UndoQuestion { kAsk, kAnswered };

// Takes back `change` of the history at `historyPath`, and shows what was left alone. False: nothing was
// tried, since the user did not want it or the reason has been shown.
bool TakeBack(CWnd& owner, const std::string& historyPath, const ChangeFacts& change, UndoQuestion question);

// Runs an undo on a worker thread and shows the name that it has come to.
class CUndoDlg : public CDialog {
  public:
    // What DoModal returns beside IDOK: nothing was tried, and a box gave the reason.
    static constexpr int kCannotStart = 3;

    CUndoDlg(std::string historyPath, std::int64_t change, CWnd* ownerWindow);
    ~CUndoDlg() override;

    // What came of it, after IDOK.
    const UndoReport& Report() const { return report; }

  protected:
    bool OnInitDialog() override;
    void OnCancel() override { Stop(); }  // the dialog stays until the worker has ended
    void OnOK() override {}
    void OnDestroy() override;
    const MessageMap& GetMessageMap() const override;

  private:
    class Run;

    void Stop();

    std::string path;
    std::int64_t number;
    UndoReport report;  // the worker's while it runs
    std::atomic<bool> stopRequested = false;
    std::unique_ptr<Run> run;
    WorkerThread worker;
};

}  // namespace permora
