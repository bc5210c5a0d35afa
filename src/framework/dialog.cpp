#include "framework/dialog.h"

#include <atomic>

#include "framework/dialog_controls.h"
#include "framework/modal_window.h"
#include "framework/resource_templates.h"
#include "platform/api/messages.h"

namespace permora {

// User-interface thread only, except for the number. A worker's EndDialog may arrive after the run has ended,
// or even after the dialog is gone.
struct CDialog::Run {
    std::atomic<unsigned int> number = 0;  // counts the runs: what was meant for one must not end the next
    ModalWindow* modal = nullptr;          // null: not running
    int result = 0;
    bool hasEnded = false;
    std::unique_ptr<ModalWindow> beside;  // of a dialog that is not modal

    void End(int value) {
        if (modal == nullptr || hasEnded) return;
        result = value;
        hasEnded = true;
        modal->End();
    }
};

CDialog::CDialog(unsigned int templateNumber, CWnd* ownerWindow)
    : templateId(templateNumber), owner(ownerWindow), run(std::make_shared<Run>()) {}

void CDialog::MakeContents(ModalWindow& modal, const DialogTemplate& dialog) {
    const Rect client = DialogUnitsToPixels({0, 0, dialog.size.cx, dialog.size.cy});
    modal.SetClientSize({client.Width(), client.Height()},
                        dialog.growing.empty() ? Sizing::kFixed : Sizing::kMayGrow);
    SetWindowText(dialog.caption);
    CreateTemplateControls(*this, dialog);
    layout.Start(*this, dialog);
    modal.SetTabOrder({this});
}

int CDialog::DoModal() {
    constexpr int kFailed = -1;
    const auto dialog = LoadDialogTemplate(templateId);
    if (!dialog || HasWindow()) return kFailed;

    ModalWindow modal(*this, owner, dialog->style, templateId);
    MakeContents(modal, *dialog);

    ++run->number;
    run->modal = &modal;
    run->result = IDCANCEL;
    run->hasEnded = false;
    const bool wantsFocus = OnInitDialog();
    if (!run->hasEnded) {
        if (wantsFocus) FocusFirstControl(*this);
        modal.Run();
    }
    run->modal = nullptr;
    DestroyWindow();
    return run->result;
}

bool CDialog::Create() {
    const auto dialog = LoadDialogTemplate(templateId);
    if (!dialog || HasWindow()) return false;
    run->hasEnded = false;
    run->beside = std::make_unique<ModalWindow>(*this, owner, dialog->style, templateId);
    MakeContents(*run->beside, *dialog);
    if (OnInitDialog()) FocusFirstControl(*this);
    return true;
}

void CDialog::ShowBeside() {
    if (HasWindow() && run->beside) run->beside->ShowBeside();
}

void CDialog::EndDialog(int result) {
    if (IsUiThread()) {
        run->End(result);
        return;
    }
    PostToUiThread([weakRun = std::weak_ptr(run), number = run->number.load(), result] {
        const auto running = weakRun.lock();
        if (running && running->number == number) running->End(result);
    });
}

void CDialog::OnOK() {
    EndDialog(IDOK);
}

void CDialog::OnCancel() {
    EndDialog(IDCANCEL);
}

bool CDialog::OnCmdMsg(Notification& notification) {
    // A key or a click may arrive after the dialog has ended, and must not change its result.
    if (run->hasEnded) return true;
    if (CWnd::OnCmdMsg(notification)) return true;
    if (notification.code != Notify::kClicked) return false;
    switch (notification.id) {
        case IDOK:
            OnOK();
            return true;
        case IDCANCEL:
            OnCancel();
            return true;
        default:
            return false;
    }
}

}  // namespace permora
