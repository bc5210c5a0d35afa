// CDialog: a dialog made from a template resource.
#pragma once

#include <memory>

#include "framework/controls.h"
#include "framework/dialog_layout.h"
#include "framework/window.h"

namespace permora {

class ModalWindow;

// The user may enlarge a dialog whose template has growing controls (dialog_layout.h).
// Enter runs the default button, or OnOK when the template has none; Escape and the close box press the
// button IDCANCEL when there is one (nothing happens while it is disabled), else run OnCancel.
class CDialog : public CWnd {
  public:
    // `owner` may be null. The window is made by DoModal; the object may run again and again.
    explicit CDialog(unsigned int templateId, CWnd* owner = nullptr);

    // Makes the window, runs OnInitDialog, processes events until EndDialog, destroys the window and returns
    // the result; -1 when the template is missing. The owner is disabled meanwhile.
    int DoModal();
    // Instead of DoModal, for a dialog that is open beside the other windows: makes the window, hidden, and
    // runs OnInitDialog. False when the template is missing or there is a window already.
    bool Create();
    // After Create: shows the window beside the active one, or brings it to the front, and gives it the
    // keyboard. It takes input also while another window is modal. ShowWindow hides it.
    void ShowBeside();
    // Ends DoModal with `result`; the first call counts. Any thread. Called before OnInitDialog returns, it
    // prevents the dialog from being shown.
    void EndDialog(int result);

  protected:
    // True: the framework gives the focus to the first control that accepts it.
    virtual bool OnInitDialog() { return true; }
    virtual void OnOK();      // default: EndDialog(IDOK)
    virtual void OnCancel();  // default: EndDialog(IDCANCEL)

    bool OnCmdMsg(Notification& notification) override;
    void OnSize(Size client) override { layout.Arrange(client); }

  private:
    friend struct WindowAccess;
    struct Run;

    void MakeContents(ModalWindow& modal, const DialogTemplate& dialog);

    unsigned int templateId;
    CWnd* owner;
    const std::shared_ptr<Run> run;
    DialogLayout layout;
};

}  // namespace permora
