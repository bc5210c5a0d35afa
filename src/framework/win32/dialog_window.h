// The window of a dialog or a sheet.
#pragma once

#include <vector>

#include "framework/win32/pane.h"
#include "framework/win32/top_window.h"

namespace permora::win32 {

class DialogWindow final : public PaintedWindow<NativeDialog>, public TopWindow {
  public:
    DialogWindow(CWnd& window, CWnd* owner, DWORD style, unsigned int templateNumber, DialogKeys& handler);
    ~DialogWindow() override;

    // The one that `window` stands in, or is; null for others.
    static DialogWindow* Around(HWND window);

    void Move(const Rect& rect) override;
    Rect RectInParent() const override { return ScreenRect(); }
    void SetToolTip(const std::string& /*text*/) override {}
    void OnOtherResolution() override {}  // its controls follow, and the system gives it a size
    void SetClientSize(Size size, Sizing sizing) override;
    void Enlarge(Size client) override;
    void SetTabOrder(std::span<CWnd* const> controls) override;
    void RunModal() override;
    void EndModal() override;
    void ShowBeside() override;

    DialogKeys& Keys() { return keys; }
    unsigned int TemplateId() const { return templateId; }
    bool UseMessage(const MSG& message) override;
    void MoveFocus(int direction, HWND leaving = nullptr) override;  // in the tab order
    // The push button with the keyboard is shown as the one that Enter presses, else the template's.
    void OnFocusMoved() override;

  protected:
    LRESULT OnMessage(const Message& message) override;

  private:
    SIZE WindowSize(Size client) const;
    void Resize(SIZE size);
    void Centre();
    void PlaceBeside(HWND shown);
    void OnActivate(bool isActive);

    DialogKeys& keys;
    const unsigned int templateId;
    std::vector<HWND> tabOrder;
    Size least;
    bool hasEnded = false;
    HWND beside = nullptr;  // the window, when it stands beside others
};

}  // namespace permora::win32
