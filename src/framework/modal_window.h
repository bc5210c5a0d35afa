// One run of a dialog or a sheet: its top-level window, the keyboard's rules in it, and its modal loop.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "framework/native.h"
#include "framework/window.h"

namespace permora {

// While it lives the top-level window over `owner`, the owner of a modal window, counts as disabled. `owner`
// may be null, and may lose its window meanwhile.
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

    void SetClientSize(Size size);
    // The keyboard goes through the controls of `windows` (of a control: itself), in that order.
    void SetTabOrder(const std::vector<CWnd*>& windows);
    // Shows the window and serves it until End; the owner is disabled meanwhile.
    void Run();
    void End();

    // What Ctrl+Tab and Ctrl+PageDown (1) or their opposites (-1) do, where there are pages.
    std::function<bool(int direction)> onNextPage;

    void OnEnterKey() override;
    void OnEscapeKeyOrCloseBox() override;
    bool OnNextPageKey(int direction) override;

  private:
    // Enter and Escape act as the buttons do, and reach the dialog's message map where there is no button.
    void Press(CWnd* button, unsigned int id);

    CWnd& window;
    CWnd* owner;
};

// Gives the focus to the first control of `window` that takes it, with the text of an edit field selected.
void FocusFirstControl(CWnd& window);

}  // namespace permora
