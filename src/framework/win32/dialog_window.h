// The window of a dialog or a sheet.
#pragma once

#include <vector>

#include "framework/win32/pane.h"

namespace permora::win32 {

class DialogWindow final : public PaintedWindow<NativeDialog> {
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
    // To the next control of the tab order that takes input, or the one before, outside of `leaving`.
    void MoveFocus(int direction, HWND leaving = nullptr);
    // The control that has the keyboard whenever the dialog is active.
    void KeepFocus(HWND control) { keptFocus = control; }
    // The push button with the keyboard is shown as the one that Enter presses, else the template's.
    void ShowDefaultButton() const;
    HWND TipWindow();

  protected:
    LRESULT OnMessage(const Message& message) override;

  private:
    SIZE WindowSize(Size client) const;
    void Resize(SIZE size);
    void Centre();
    void PlaceBeside(HWND shown);
    void OnActivate(bool isActive);
    void OnResolution(const RECT& suggested);

    DialogKeys& keys;
    const unsigned int templateId;
    std::vector<HWND> tabOrder;
    HWND keptFocus = nullptr;
    HWND tips = nullptr;
    Size least;
    bool hasEnded = false;
    HWND beside = nullptr;  // the window, when it stands beside others
};

}  // namespace permora::win32
