// The common half of this back end's windows: a window of the system, its messages, and its part of
// NativeWindow.
#pragma once

#include <string>

#include "framework/native.h"
#include "framework/win32/message_target.h"
#include "framework/win32/scale.h"
#include "framework/win32/text.h"

namespace permora::win32 {

// A window of the system to be made.
struct WindowSpec {
    const wchar_t* className = nullptr;
    DWORD style = 0;
    DWORD extendedStyle = 0;
    Rect rect{};
};

// Makes a child of `parent` with the message font, hidden until the shared half shows it.
HWND MakeChild(CWnd& parent, const WindowSpec& spec, unsigned int id, const std::string& text);

// Gives a window the keyboard: at once in the active top-level window, else when that becomes active.
void GiveFocus(HWND window);
// Before a window that has the keyboard is disabled or hidden: the next one gets it.
void PassFocusOn(HWND window);
// After a window has got the keyboard: its dialog shows which button Enter presses.
void FocusMoved(HWND window);
// The tip of a control, in the tip window of its top-level window.
void ShowTipFor(HWND control, const std::string& text);
// For assistive technology.
void AnnotateName(HWND window, const std::string& name);
// True while the windows are busy (ServeBusyWindowsUntil); the pointer over them has been set then.
bool ShowBusyCursor();

inline Point PointOf(LPARAM position, UINT dpi) {
    return {ToLogical(static_cast<short>(LOWORD(position)), dpi),
            ToLogical(static_cast<short>(HIWORD(position)), dpi)};
}

// `Kind` is NativeWindow or one of its kinds. Whoever derives from it adopts the window.
template <class Kind>
class SystemWindow : public Kind, public MessageTarget {
  public:
    SystemWindow(CWnd& window, const Rect& rect) : Kind(window), place(rect) {}

    HWND Handle() const override { return Own(); }
    void SetText(const std::string& text) override { SetWindowTextW(Own(), Wide(text).c_str()); }
    std::string Text() const override { return Utf8(TextOf(Own())); }
    void SetEnabled(bool enabled) override {
        if (!enabled) PassFocusOn(Own());
        ::EnableWindow(Own(), enabled ? TRUE : FALSE);
    }
    void SetVisible(bool visible) override {
        if (!visible) PassFocusOn(Own());
        ::ShowWindow(Own(), visible ? SW_SHOWNA : SW_HIDE);
    }
    void Redraw() override {
        ::RedrawWindow(Own(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    }
    void Invalidate() override { InvalidateRect(Own(), nullptr, TRUE); }
    void SetFocus() override { GiveFocus(Own()); }
    bool HasFocus() const override { return Own() != nullptr && ::GetFocus() == Own(); }
    Rect ScreenRect() const override {
        RECT rect{};
        ::GetWindowRect(Own(), &rect);
        return ToLogical(rect, Dpi());
    }
    Rect ClientRect() const override {
        RECT rect{};
        ::GetClientRect(Own(), &rect);
        return ToLogical(rect, Dpi());
    }
    Rect RectInParent() const override { return place; }
    void Move(const Rect& rect) override {
        place = rect;
        const RECT device = ToDevice(rect, Dpi());
        SetWindowPos(Own(), nullptr, device.left, device.top, device.right - device.left,
                     device.bottom - device.top + ToDevice(BelowTheWindow(), Dpi()),
                     SWP_NOZORDER | SWP_NOACTIVATE);
    }
    Size PreferredSize() const override { return {place.Width(), place.Height()}; }
    void SetAccessibleName(const std::string& name) override { AnnotateName(Own(), name); }
    void SetToolTip(const std::string& text) override { ShowTipFor(Own(), text); }
    void OnOtherResolution() override {
        SendMessageW(Own(), WM_SETFONT, reinterpret_cast<WPARAM>(MessageFont(Dpi())), TRUE);
        Move(place);
    }

  protected:
    UINT Dpi() const { return GetDpiForWindow(Own()); }
    // How much larger the system's window is than what is seen of it.
    virtual int BelowTheWindow() const { return 0; }
    LRESULT OnMessage(const Message& message) override {
        // Nothing is reported before the window of the contract owns this object.
        if (!Kind::Window().HasWindow()) return Default(message);
        switch (message.code) {
            case WM_SIZE: {
                const LRESULT answer = Default(message);
                const Rect client = ClientRect();
                Kind::ReportSize({client.Width(), client.Height()});
                return answer;
            }
            case WM_SETFOCUS: {
                const LRESULT answer = Default(message);
                FocusMoved(Own());
                Kind::ReportFocus();
                return answer;
            }
            case WM_MOUSEMOVE:
                if (Kind::ReportMouseMove(PointOf(message.wider, Dpi())) == Handled::kYes) return 0;
                break;
            case WM_LBUTTONDOWN:
                if (Kind::ReportLeftButtonDown(PointOf(message.wider, Dpi())) == Handled::kYes) return 0;
                break;
            case WM_SETCURSOR:
                if (ShowBusyCursor()) return TRUE;
                break;
            default:
                break;
        }
        return Default(message);
    }

    Rect place;  // of a child, in its parent's client area
};

}  // namespace permora::win32
