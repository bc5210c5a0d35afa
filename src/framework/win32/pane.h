// Windows of the framework's own class: dialogs, and what holds the controls of a template in them.
#pragma once

#include <functional>

#include "framework/win32/window.h"

namespace permora::win32 {

// Registers a class of windows with that class style (CS_) and pointer. Once for each name.
bool RegisterOwn(const wchar_t* name, UINT style, LPCSTR cursor);
// The class of these windows, registered when it is first asked for.
const wchar_t* OwnClass();

// Answers WM_PAINT: over the background, `paint` draws with the contract's context.
void PaintWith(HWND window, const std::function<void(CDC&)>& paint);

// A window in which the program paints.
template <class Kind>
class PaintedWindow : public SystemWindow<Kind> {
  public:
    using SystemWindow<Kind>::SystemWindow;

  protected:
    LRESULT OnMessage(const Message& message) override {
        if (message.code != WM_PAINT) return SystemWindow<Kind>::OnMessage(message);
        PaintWith(this->Own(), [this](CDC& dc) { this->ReportPaint(dc); });
        return 0;
    }
};

// Holds the controls of a template in a dialog, a sheet or a frame.
class PaneWindow final : public PaintedWindow<NativeWindow> {
  public:
    PaneWindow(CWnd& window, CWnd& parent, unsigned int id);

    // Of Enter and Escape in the pane, in a frame (WatchKeys).
    std::function<void()> onEnter;
    std::function<void()> onEscape;

  protected:
    LRESULT OnMessage(const Message& message) override;
};

}  // namespace permora::win32
