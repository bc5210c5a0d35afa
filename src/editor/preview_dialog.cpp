#include "editor/preview_dialog.h"

#include <utility>

#include "editor/required_control.h"
#include "framework/styles.h"
#include "framework/worker_updates.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/grouped_number.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kLineWidth = 800;
constexpr std::chrono::milliseconds kTellingPause{100};

}  // namespace

const MessageMap& CPreviewDlg::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CPreviewDlg>(
        CDialog::GetMessageMap(), {
                                      {IDC_PREVIEW_STOP, Notify::kClicked, &CPreviewDlg::Stop},
                                      {IDC_PREVIEW_COPY, Notify::kClicked, &CPreviewDlg::Copy},
                                  });
    return kMap;
}

CPreviewDlg::CPreviewDlg(CWnd* ownerWindow, Purpose use, MakePreview maker)
    : CDialog(use == Purpose::kAsk ? IDD_PREVIEW_QUESTION : IDD_PREVIEW, ownerWindow),
      purpose(use),
      make(std::move(maker)) {}

bool CPreviewDlg::OnInitDialog() {
    Lines().InsertColumn(0, "What will happen", kLineWidth);
    Lines().SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    progress = &Progress();
    // The worker must not ask for the windows itself.
    const auto work = [this] {
        Work();
        QueueWork(*progress, [this] { Show(); });
    };
    if (const DWORD error = worker.Start(work); error != ERROR_SUCCESS) {
        ShowSystemErrorBox(GetSafeHwnd(), error);
        EndDialog(IDCANCEL);
    }
    return true;
}

void CPreviewDlg::Work() {
    if (!known && decide) {
        const ChangePreview preview = decide(*this);
        takesUnseen = preview.TakesUnseen() || preview.isStopped;
        if (preview.isStopped && !isCancelled) lines = PreviewLines(preview, AccountDisplayName);
        if (!takesUnseen || preview.isStopped) return;
        count = 0;
    }
    const auto preview = known ? known : std::make_shared<const ChangePreview>(make(*this));
    takesUnseen = preview->TakesUnseen() || preview->isStopped;
    if (!isCancelled) lines = PreviewLines(*preview, AccountDisplayName);
    made = preview;
    madeAt = std::chrono::steady_clock::now();
}

// One call at a time, though on several threads.
bool CPreviewDlg::Begin(const char* name) {
    ++count;
    const auto now = std::chrono::steady_clock::now();
    if (now - told >= kTellingPause) {
        told = now;
        progress->SetWindowText(GroupedNumber(count) + ": " + name);
    }
    return !isStopped;
}

void CPreviewDlg::Show() {
    isShown = true;
    if (isCancelled) return EndDialog(IDCANCEL);
    if (purpose == Purpose::kAsk && !takesUnseen) return EndDialog(IDOK);
    for (const std::string& line : lines)
        Lines().InsertItem(Lines().GetItemCount(), line);
    if (isStopped)
        progress->SetWindowText("Stopped");
    else
        progress->SetWindowText(known ? "As it was previewed" : ObjectsText(count) + " looked at");
    for (const unsigned int id : {unsigned{IDC_PREVIEW_COPY}, unsigned{IDOK}})
        if (CWnd* button = GetDlgItem(id)) button->EnableWindow(true);
    GetDlgItem(IDC_PREVIEW_STOP)->EnableWindow(false);
    Lines().SetSelected(0, true);
    Lines().SetFocus();
}

void CPreviewDlg::Stop() {
    isStopped = true;
}

void CPreviewDlg::OnOK() {
    const auto* doNotAsk = GetDlgItem<CButton>(IDC_PREVIEW_DO_NOT_ASK);
    if (askBeforeLosses != nullptr && doNotAsk != nullptr && doNotAsk->IsChecked()) *askBeforeLosses = 0;
    CDialog::OnOK();
}

// While the worker waits for a domain or a disk, the window goes on painting.
void CPreviewDlg::OnCancel() {
    isStopped = true;
    isCancelled = true;
    if (isShown)
        CDialog::OnCancel();
    else
        progress->SetWindowText("Stopping...");
}

void CPreviewDlg::OnDestroy() {
    isStopped = true;
    worker.Wait();
}

void CPreviewDlg::Copy() {
    std::string text;
    for (const std::string& line : lines)
        text += line + '\n';
    CopyTextOrTell(*this, text);
}

CListCtrl& CPreviewDlg::Lines() const {
    return RequiredControl<CListCtrl>(*this, IDC_PREVIEW_LINES);
}

CStatic& CPreviewDlg::Progress() const {
    return RequiredControl<CStatic>(*this, IDC_PREVIEW_PROGRESS);
}

}  // namespace permora
