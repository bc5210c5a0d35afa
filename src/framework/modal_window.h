// One run of a dialog or a sheet: its top-level window, the rules of its keyboard, and its modal loop.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "framework/native.h"
#include "framework/window.h"

namespace permora {

// While it exists, the top-level window of `owner` counts as disabled. `owner` may be null, and may lose its
// window meanwhile.
class OwnerDisabler {
  public:
    explicit OwnerDisabler(CWnd* owner);
    ~OwnerDisabler();
    OwnerDisabler(const OwnerDisabler&) = delete;
    OwnerDisabler& operator=(const OwnerDisabler&) = delete;

  private:
    CWnd* top;
};

class ModalWindow : public DialogKeys {
  public:
    // Gives `window` a hidden top-level window; `owner` may be null.
    ModalWindow(CWnd& window, CWnd* owner, DWORD style, unsigned int templateId);
    ~ModalWindow() override = default;
    ModalWindow(const ModalWindow&) = delete;
    ModalWindow& operator=(const ModalWindow&) = delete;

    void SetClientSize(Size size, Sizing sizing);
    void Enlarge(Size client);
    // Sets the tab order: the controls of each of `windows`; a control counts as itself.
    void SetTabOrder(const std::vector<CWnd*>& windows);
    // Shows the window and processes events until End; the owner is disabled meanwhile.
    void Run();
    void End();
    // Instead of Run: shows it beside the other windows, or brings it to the front
    // (NativeDialog::ShowBeside).
    void ShowBeside();

    // For windows with pages: Ctrl+Tab and Ctrl+PageDown call it with 1, their opposites with -1.
    std::function<bool(int direction)> onNextPage;
    // Which template the help is asked for; without it: the window's own.
    std::function<unsigned int()> onHelp;

    void OnEnterKey() override;
    void OnEscapeKeyOrCloseBox() override;
    bool OnNextPageKey(int direction) override;
    void OnHelpKey() override;  // asks the application object

  private:
    // Clicks `button`. Without a button the message map gets a click on `id`.
    void Press(CWnd* button, unsigned int id);

    CWnd& window;
    CWnd* owner;
    const unsigned int templateId;
};

// Gives the focus to the first control of `window` that accepts it, with the text of an edit field selected.
void FocusFirstControl(CWnd& window);

}  // namespace permora
