#include "wizard/deletion_page.h"

#include <atomic>

#include "deletion/secure_delete_dialog.h"
#include "editor/required_control.h"
#include "framework/list_ctrl.h"
#include "framework/stoppable_work.h"
#include "framework/worker_updates.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "wizard/deletion_status.h"

namespace permora {
namespace {

constexpr int kStatusWidth = 700;

}  // namespace

// The worker's data, written before it starts. The worker never waits for the user-interface thread, which
// takes the rows when it can show them.
class CWizardPage2::Run : public DeletionStatus {
  public:
    explicit Run(CWizardPage2& shownPage)
        : DeletionStatus(stop), page(shownPage), window(shownPage.GetSafeHwnd()) {}

    void Deleted(const std::string& name) override {
        DeletionStatus::Deleted(name);
        left.Deleted(trail, name);
    }
    void Failed(const Outcome& failure) override {
        if (failure.object.empty()) return ShowOutcome(window, failure);
        DeletionStatus::Failed(failure);
        left.Failed(trail, failure);
    }

    void Work() {
        const StoppableWork stoppable([this] { stop = true; });
        for (RememberedObject& item : page.place->items) {
            if (stopRequested) break;
            left.Begin({item});
            SecureDeleteItem(*this, item);
            left.End();
            item = {};  // a remembered file would keep its space
        }
        if (!stopRequested) WriteTotal();
        hasEnded = true;
        OnChanges();
    }

    std::atomic<bool> stop = false;
    std::atomic<bool> hasEnded = false;  // all rows are written
    bool isOver = false;                 // the page has seen the end
    FailedDeletions left;                // the worker's until it has ended

  protected:
    void OnChanges() override {
        QueueWork(page, [&shown = page] { shown.ShowStatus(); });
    }

  private:
    CWizardPage2& page;
    HWND window;
};

const MessageMap& CWizardPage2::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CWizardPage2>(
        CPropertyPage::GetMessageMap(), {
                                            {IDC_SHOW_LEFT_OVER, Notify::kClicked, &CWizardPage2::OnShowLeft},
                                        });
    return kMap;
}

CWizardPage2::CWizardPage2() : CPropertyPage(IDD_WIZARD_DELETION_PAGE) {}

CWizardPage2::~CWizardPage2() = default;

bool CWizardPage2::OnInitDialog() {
    auto& list = RequiredControl<CListCtrl>(*this, IDC_DELETION_STATUS);
    list.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    list.InsertColumn(0, "", kStatusWidth);
    EnableLeft();
    isCancelling = false;
    return CPropertyPage::OnInitDialog();
}

bool CWizardPage2::OnSetActive() {
    constexpr WizardButtons kIdle = WizardButtons::kBack | WizardButtons::kDisabledFinish;
    Sheet()->SetWizardButtons(kIdle);
    if (!IsRunning()) {
        Sheet()->SetWizardButtons(WizardButtons::kDisabledFinish);
        if (MayDelete())
            Start();
        else
            Sheet()->SetWizardButtons(kIdle);
    }
    return CPropertyPage::OnSetActive();
}

bool CWizardPage2::MayDelete() const {
    if (place->kind == PlaceKind::kDrives) {
        MessageBoxA(
            GetSafeHwnd(),
            "Security Wizard can not delete disk drives.\nPlease, select folders and files to delete.",
            "Security Wizard", MB_OK);
        return false;
    }
    return !askBeforeSecureDeletion ||
           MessageBoxA(GetSafeHwnd(), "Are you sure want to delete selected items?", "Secure deletion",
                       MB_YESNO | MB_ICONQUESTION) == IDYES;
}

// When it cannot be started, only Cancel is left.
void CWizardPage2::Start() {
    run = std::make_unique<Run>(*this);
    const DWORD error = worker.Start([this] { run->Work(); });
    if (error == ERROR_SUCCESS) return;
    run.reset();
    ShowSystemErrorBox(GetSafeHwnd(), error);
}

bool CWizardPage2::IsRunning() const {
    return run && !run->isOver;
}

void CWizardPage2::ShowStatus() {
    if (!IsRunning()) return;
    const bool hasEnded = run->hasEnded;  // read first: then TakeChanges returns all rows
    auto& list = RequiredControl<CListCtrl>(*this, IDC_DELETION_STATUS);
    // The list scrolls to its end until the user has scrolled or selected a row.
    const int last = list.GetItemCount() - 1;
    const bool isFollowing = list.GetSelectedCount() == 0 && (last < 0 || list.IsItemVisible(last));
    for (const StatusChange& change : run->TakeChanges())
        if (!list.SetItemText(change.row, 0, change.text)) list.InsertItem(change.row, change.text);
    if (isFollowing) list.EnsureVisible(list.GetItemCount() - 1);
    if (!hasEnded) return;
    run->isOver = true;
    EnableLeft();
    Sheet()->SetWizardButtons(WizardButtons::kFinish);
    if (isCancelling) Sheet()->Cancel();
}

void CWizardPage2::OnShowLeft() {
    CResultsDlg(this, run->left.Results(), DeletionAgain(run->left)).DoModal();
    EnableLeft();
}

void CWizardPage2::EnableLeft() {
    const bool hasFailures = run && run->isOver && run->left.Results().Count(ResultState::kFailed) > 0;
    RequiredControl<CButton>(*this, IDC_SHOW_LEFT_OVER).EnableWindow(hasFailures);
}

bool CWizardPage2::OnQueryCancel() {
    if (!IsRunning()) return true;
    run->stop = true;
    isCancelling = true;
    if (CWnd* button = Sheet()->GetDlgItem(IDCANCEL)) button->EnableWindow(false);
    return false;
}

// The worker may still run when the program itself ends.
void CWizardPage2::StopWorker() {
    if (run) run->stop = true;
    worker.Wait();
    run.reset();
}

}  // namespace permora
