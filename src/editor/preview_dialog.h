// CPreviewDlg: what a change would do, counted on a worker thread; shown, or asked about before the change.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "framework/worker_thread.h"
#include "security/change_preview.h"

namespace permora {

// Makes the preview; on the worker thread.
using MakePreview = std::function<ChangePreview(TreeObserver& observer)>;

class CPreviewDlg : public CDialog, private TreeObserver {
  public:
    enum class Purpose : std::uint8_t {
        kShow,  // ended by IDCANCEL
        kAsk,   // IDOK: the change may be made; without a question when it takes nothing unseen
    };

    // What `maker` uses must outlive the dialog.
    CPreviewDlg(CWnd* ownerWindow, Purpose purpose, MakePreview maker);

    // The setting that "Do not ask again" clears; borrowed.
    std::uint8_t* askBeforeLosses = nullptr;
    // What was shown just before, so that it is not made again; null: nothing was.
    std::shared_ptr<const ChangePreview> known;
    // With kAsk, a quicker preview that tells whether there is anything to ask about; null: there is none.
    MakePreview decide;

    // What was shown, once the dialog has ended; null when the preview was stopped.
    std::shared_ptr<const ChangePreview> Made() const { return made && !made->isStopped ? made : nullptr; }
    std::chrono::steady_clock::time_point MadeAt() const { return madeAt; }

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    void OnDestroy() override;
    const MessageMap& GetMessageMap() const override;

  private:
    // On the worker thread.
    void Work();
    bool Begin(const char* name) override;
    void PassOver(const std::string& /*path*/, DWORD /*error*/) override {}

    void Stop();
    void Show();
    void Copy();
    CListCtrl& Lines() const;
    CStatic& Progress() const;

    const Purpose purpose;
    const MakePreview make;
    std::atomic<bool> isStopped = false;
    std::atomic<bool> isCancelled = false;  // the dialog ends with the worker
    bool isShown = false;                   // the worker has ended
    // The worker's until it queues Show.
    std::size_t count = 0;
    std::chrono::steady_clock::time_point told;
    CStatic* progress = nullptr;
    bool takesUnseen = false;
    std::shared_ptr<const ChangePreview> made;
    std::chrono::steady_clock::time_point madeAt;
    std::vector<std::string> lines;
    WorkerThread worker;
};

}  // namespace permora
