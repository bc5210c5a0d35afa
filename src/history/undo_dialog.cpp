#include "history/undo_dialog.h"

#include <utility>

#include "framework/stoppable_work.h"
#include "framework/styles.h"
#include "history/history_texts.h"
#include "history/undo.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {

bool TakeBack(CWnd& owner, const std::string& historyPath, const ChangeFacts& change, UndoQuestion question) {
    constexpr const char* kCaption = "Undo";
    if (question == UndoQuestion::kAsk && MessageBoxA(owner.GetSafeHwnd(), UndoQuestionText(change).c_str(),
                                                      kCaption, MB_YESNO | MB_ICONQUESTION) != IDYES)
        return false;
    CUndoDlg dialog(historyPath, change.number, &owner);
    if (dialog.DoModal() != IDOK) return false;
    const UndoReport& report = dialog.Report();
    (report.IsComplete() ? ShowInfoBox : ShowErrorBox)(owner.GetSafeHwnd(), report.Text().c_str());
    return true;
}

// The worker's view of the dialog; written before it starts.
class CUndoDlg::Run : public UndoObserver {
  public:
    Run(CUndoDlg& shownDialog, CStatic& label) : dialog(shownDialog), progress(label) {}

    bool Begin(const ChangedTop& top, const std::string& path) override {
        progress.SetWindowText(path.empty() ? top.path : path);
        progress.RedrawWindow();
        return !dialog.stopRequested;
    }
    void Leave(const ChangedTop& top, const std::string& path, LeftAlone extent, DWORD reason) override {
        dialog.report.AddLeft(top, path, extent, reason);
    }

    void Work() {
        const StoppableWork stoppable([this] { dialog.stopRequested = true; });
        std::unique_ptr<History> history;
        UndoReport& report = dialog.report;
        report.error = History::Open(dialog.path, history);
        if (report.error == ERROR_SUCCESS)
            report.error = UndoChange(*history, dialog.number, {}, *this, report.counts);
        history.reset();
        dialog.EndDialog(IDOK);
    }

  private:
    CUndoDlg& dialog;
    CStatic& progress;
};

CUndoDlg::CUndoDlg(std::string historyPath, std::int64_t change, CWnd* ownerWindow)
    : CDialog(IDD_UNDO, ownerWindow), path(std::move(historyPath)), number(change) {}

CUndoDlg::~CUndoDlg() = default;

const MessageMap& CUndoDlg::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CUndoDlg>(
        CDialog::GetMessageMap(), {
                                      {IDC_STOP_UNDO, Notify::kClicked, &CUndoDlg::Stop},
                                  });
    return kMap;
}

bool CUndoDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    stopRequested = false;
    report = {};
    run = std::make_unique<Run>(*this, *GetDlgItem<CStatic>(IDC_UNDO_PROGRESS));
    if (const DWORD error = worker.Start([this] { run->Work(); }); error != ERROR_SUCCESS) {
        ShowSystemErrorBox(GetSafeHwnd(), error);
        EndDialog(kCannotStart);
    }
    return true;
}

void CUndoDlg::Stop() {
    CWnd* button = GetDlgItem(IDC_STOP_UNDO);
    button->ModifyStyle(0, WS_DISABLED);
    button->RedrawWindow();
    stopRequested = true;
}

// The worker shows texts in the window until its end.
void CUndoDlg::OnDestroy() {
    stopRequested = true;
    worker.Wait();
}

}  // namespace permora
