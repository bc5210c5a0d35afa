// CResultsFrame: a window beside the main window that shows what a worker finds, while it finds it.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/bars.h"
#include "framework/frame_window.h"
#include "framework/repeated_work.h"
#include "framework/worker_thread.h"
#include "results/page_list.h"
#include "results/results_bar.h"
#include "results/results_host.h"

namespace permora {

class CResultsFrame : public CFrameWnd {
  public:
    // The lists of the pages have these numbers, in their order.
    static constexpr unsigned int kFirstListId = 1;

    // `program` and what is called outlive the window. `closed` is called when the window has closed and its
    // worker has ended; it may destroy this object.
    CResultsFrame(std::unique_ptr<ResultSource> filledFrom, ResultsHost& program,
                  std::function<void(CResultsFrame&)> closed);
    ~CResultsFrame() override;  // as StopAndClose

    // Makes and shows the window, a little below and beside `neighbour`, and starts the worker. False: there
    // is no window.
    bool Open(const Rect& neighbour);
    // Stops the worker, waits for it, and destroys the window.
    void StopAndClose();

  protected:
    bool OnCreate() override;
    void OnClose() override;  // hides the window, which goes when the worker has ended
    const MessageMap& GetMessageMap() const override;

  private:
    enum class Work : std::uint8_t { kSearching, kSaving, kNone };

    void StartRun();
    void TakeNews();
    void EndRun();
    void EndSaving();
    void ShowState();
    void ShowStatus(const std::string& text);
    void ShowPage(std::size_t page);
    PageList& Page() const { return *pages[shownPage]; }
    bool IsEnabled(unsigned int command) const;

    // Notifications of the lists and of the bar.
    void OnActivate(Notification& notification);
    void OnKeyDown(Notification& notification);
    void OnSelectionChanged();
    void OnColumnClick(Notification& notification);
    void OnRightClick(Notification& notification);
    void OnPageChosen();
    void OnLeaveBar();

    // Commands.
    void OnUpdateCommand(Notification& notification);
    void OnPage(Notification& notification);
    void OnUpdatePage(Notification& notification);
    void EditSelected();
    void ShowInFolder();
    void CopyPaths();
    void SelectAll();
    void SaveAs();
    void ShowHelp();
    void Stop();

    const std::unique_ptr<ResultSource> source;
    ResultsHost& host;
    const std::function<void(CResultsFrame&)> onClosed;
    CMenu contextMenu;
    ResultsBar bar;
    CStatusBar statusBar;
    std::vector<std::unique_ptr<PageList>> pages;
    std::size_t shownPage = 0;

    Work work = Work::kNone;
    bool isClosing = false;
    std::string savedAs;          // the file that is written
    DWORD saved = ERROR_SUCCESS;  // the worker's result
    std::atomic<bool> isStopped = false;
    RepeatedWork news;
    WorkerThread worker;  // last: what it uses outlives it
};

}  // namespace permora
