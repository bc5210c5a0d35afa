#include "deletion/secure_delete_dialog.h"

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "deletion/item_sizes.h"
#include "deletion/secure_delete.h"
#include "framework/stoppable_work.h"
#include "framework/styles.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {

// The worker's view of the dialog; written before it starts.
class CSecureDelete::Run : public SecureDeleteHost {
  public:
    Run(CSecureDelete& shownDialog, CStatic& label)
        : SecureDeleteHost(shownDialog.stopRequested),
          dialog(shownDialog),
          window(shownDialog.GetSafeHwnd()),
          progress(label) {}

    void BeginEntry(const std::string& name) override {
        progress.SetWindowText(name);
        progress.RedrawWindow();
    }

    void Overwritten(ULONGLONG bytes) override { dialog.progress->Overwritten(bytes); }
    void Deleted(const std::string& name) override {
        dialog.progress->Deleted();
        dialog.left.Deleted(trail, name);
    }
    void Failed(const Outcome& failure) override {
        if (!failure.object.empty()) return dialog.left.Failed(trail, failure);
        dialog.progress->Pause();
        ShowOutcome(window, failure);
        dialog.progress->GoOn();
    }

    // Asked once; the answer holds for all later files.
    bool MayOverwrite(const std::string& name, const std::vector<OverwriteObstacle>& /*obstacles*/) override {
        if (!mayBeOpenElsewhere) {
            const std::string text =
                "Whether another program has this file open cannot be known:\n\n" + trail.PathOf(name) +
                "\n\nDelete it, and the others of which that cannot be known? No leaves them where they are.";
            dialog.progress->Pause();
            mayBeOpenElsewhere =
                AskInBox(window, text.c_str(), "Secure deletion", MB_YESNO | MB_ICONQUESTION) == IDYES;
            dialog.progress->GoOn();
        }
        return *mayBeOpenElsewhere;
    }

    void Work() {
        const StoppableWork stoppable([this] { dialog.stopRequested = true; });
        CountItems();
        bool isWhole = true;
        for (DeletionTarget& target : dialog.chosen) {
            isWhole = isWhole && !stopRequested;
            dialog.left.Begin(target);
            if (isWhole) {
                BeginEntry(target.object.Path());
                if (target.failure.IsDone())
                    SecureDeleteItem(*this, target.object);
                else
                    SecureDeleteAgain(*this, target.object, target.extent);
            }
            dialog.left.End();
            dialog.progress->EndItem();
            target = {};  // a file that is remembered keeps its space
        }
        dialog.EndDialog(isWhole && !dialog.isCancelled ? IDOK : IDCANCEL);
    }

  private:
    void CountItems() {
        ItemSizes sizes;
        const auto count = [this](const DeletionSize& soFar) {
            dialog.progress->Counting(soFar);
            return !stopRequested;
        };
        for (const DeletionTarget& target : dialog.chosen) {
            const bool isWhole = target.extent == DeletionExtent::kWhole;
            dialog.progress->AddItem(isWhole ? sizes.Measure(target.object, count) : DeletionSize{0, 1});
        }
        dialog.progress->Start();
    }

    CSecureDelete& dialog;
    HWND window;
    CStatic& progress;
    std::optional<bool> mayBeOpenElsewhere;
};

CSecureDelete::CSecureDelete(CWnd* ownerWindow, FailedDeletions& results)
    : CDialog(IDD_SECURE_DELETION, ownerWindow), left(results) {}

CSecureDelete::~CSecureDelete() = default;

const MessageMap& CSecureDelete::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CSecureDelete>(
        CDialog::GetMessageMap(), {
                                      {IDC_STOP_DELETION, Notify::kClicked, &CSecureDelete::Stop},
                                  });
    return kMap;
}

bool CSecureDelete::OnInitDialog() {
    CDialog::OnInitDialog();
    stopRequested = isCancelled = false;
    auto* label = GetDlgItem<CStatic>(IDC_DELETION_PROGRESS);
    if (label == nullptr) {
        ShowErrorBox(GetSafeHwnd(), "Error: cannot initialize dialog box");
        EndDialog(kCannotStart);
        return false;
    }
    constexpr std::chrono::milliseconds kPause(200);
    progress = std::make_unique<DeletionProgress>();
    run = std::make_unique<Run>(*this, *label);
    if (const DWORD error = worker.Start([this] { run->Work(); }); error != ERROR_SUCCESS) {
        ShowSystemErrorBox(GetSafeHwnd(), error);
        EndDialog(kCannotStart);
    }
    display.Start(kPause, [this] { ShowProgress(); });
    return true;
}

void CSecureDelete::ShowProgress() {
    const DeletionState state = progress->Look(std::chrono::steady_clock::now());
    auto* bar = GetDlgItem<CProgressCtrl>(IDC_DELETION_BAR);
    auto* text = GetDlgItem<CStatic>(IDC_DELETION_TIME_LEFT);
    if (bar == nullptr || text == nullptr) return;
    bar->ModifyStyle(state.percent ? PBS_MARQUEE : 0, state.percent ? 0 : PBS_MARQUEE);
    if (state.percent) bar->SetPos(*state.percent);
    text->SetWindowText(state.text);
}

void CSecureDelete::Stop() {
    if (CWnd* button = GetDlgItem(IDC_STOP_DELETION)) {
        button->ModifyStyle(0, WS_DISABLED);
        button->RedrawWindow();
    }
    stopRequested = true;
}

void CSecureDelete::OnCancel() {
    isCancelled = true;
    Stop();
}

// The worker shows texts in the window until its end.
void CSecureDelete::OnDestroy() {
    display.Stop();
    stopRequested = true;
    worker.Wait();
}

int DeleteForGood(CWnd* owner, std::vector<RememberedObject> chosen) {
    FailedDeletions left;
    CSecureDelete dialog(owner, left);
    dialog.chosen = TargetsOf(std::move(chosen));
    const int result = dialog.DoModal();
    ShowResults(owner, left.Results(), DeletionAgain(left));
    return result;
}

TryAgain DeletionAgain(FailedDeletions& left) {
    return [&left](CWnd& window, std::span<const ObjectPlace> /*places*/, ChangeResults& results) {
        FailedDeletions next = left;
        CSecureDelete dialog(&window, next);
        dialog.chosen = next.TakeFailed();
        if (dialog.DoModal() == CSecureDelete::kCannotStart) return false;
        left = std::move(next);
        results = left.Results();
        return true;
    };
}

}  // namespace permora
