// CWnd: the base of everything that has a window.
//
// Threads: windows are made, used and destroyed on the user-interface thread. The few functions that a worker
// may call say so; the framework passes them on. A worker never waits for the display: of several texts set
// for one window only the latest is shown.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/geometry.h"
#include "framework/message_map.h"
#include "platform/api/base.h"

namespace permora {

class CDC;
class NativeWindow;  // the back end's half

struct NativeWindowDeleter {
    void operator()(NativeWindow* window) const;
};

// Whether a handler used a window message.
enum class Handled { kNo, kYes };

class CWnd : public CCmdTarget {
  public:
    CWnd();
    CWnd(const CWnd&) = delete;
    CWnd& operator=(const CWnd&) = delete;
    ~CWnd() override;  // destroys the window if it still exists

    // Gives the object a plain child window, visible and empty, in `owner`'s client coordinates.
    bool CreateChild(CWnd& owner, const Rect& rect, unsigned int id);

    // The window for message boxes and services; null while there is none.
    HWND GetSafeHwnd() const;
    bool HasWindow() const { return native != nullptr; }
    CWnd* GetParent() const { return parent; }

    // Any thread. Of the texts that a worker sets the latest is shown, at the display's pace.
    void SetWindowText(const std::string& text);
    std::string GetWindowText() const;

    // WS_ and control styles. Adding or removing WS_DISABLED and WS_VISIBLE acts at once, as do the view bits
    // of a list view.
    DWORD GetStyle() const;
    void ModifyStyle(DWORD remove, DWORD add);
    // Paints anew: invalidate, erase and update now. Any thread; from a worker it means "soon".
    void RedrawWindow();

    void EnableWindow(bool enable);
    bool IsWindowEnabled() const;
    // What is shown while the mouse rests on a control or on its label, and what assistive technology says
    // beside its name.
    void SetToolTip(const std::string& text);
    void ShowWindow(int showCommand);  // SW_ constants
    void SetFocus();
    bool HasFocus() const;

    Rect GetWindowRect() const;         // screen coordinates
    Rect GetClientRect() const;         // origin 0,0
    void MoveWindow(const Rect& rect);  // parent's client coordinates; the screen's for top-level windows

    // A control of this window by id; null when there is none. The typed form is also null when the control
    // is of another kind. The controls of a template belong to this window. After the window is destroyed
    // their objects stay until it is made again or its object is destroyed, so that a worker that is about to
    // end may still call functions for any thread.
    CWnd* GetDlgItem(unsigned int id) const;
    template <class Control>
    Control* GetDlgItem(unsigned int id) const {
        return dynamic_cast<Control*>(GetDlgItem(id));
    }

    // Destroys the window (and its controls); the object stays and may be given a new one.
    void DestroyWindow();

  protected:
    // Window messages. The defaults are those of the window's kind.
    virtual void OnDestroy() {}  // before the window is destroyed
    virtual void OnSize(Size /*client*/) {}
    virtual void OnPaint(CDC& /*dc*/) {}  // over the background
    virtual Handled OnMouseMove(Point /*client*/) { return Handled::kNo; }
    virtual Handled OnLButtonDown(Point /*client*/) { return Handled::kNo; }
    virtual void OnSetFocus() {}

  private:
    friend class NativeWindow;
    friend struct WindowAccess;  // for the framework's own sources

    void ReleaseWindow();  // without OnDestroy

    std::unique_ptr<NativeWindow, NativeWindowDeleter> native;
    CWnd* parent = nullptr;
    unsigned int controlId = 0;
    std::vector<CWnd*> children;                       // all child windows, in the order of their making
    std::vector<std::unique_ptr<CWnd>> ownedControls;  // those that came from the template
};

// Runs `work` on the user-interface thread. Post queues it after earlier messages and returns at once. Call
// runs it and returns when it is done. A worker that the user-interface thread is waiting for must not use
// Call.
void PostToUiThread(std::function<void()> work);
void CallOnUiThread(const std::function<void()>& work);
bool IsUiThread();

}  // namespace permora
