// CWnd: the base of everything that has a window.
//
// Threads: windows are made, used and destroyed on the user-interface thread. The few operations that a
// worker may call say so: the framework hands them over. A worker that reports faster than the display paints
// does not wait: of several texts set for one window only the latest is shown.
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

// What an offer of a window message wants back.
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

    // Any thread. Text that a worker sets is latest-wins and painted at the display's pace.
    void SetWindowText(const std::string& text);
    std::string GetWindowText() const;

    // WS_ and control styles. Adding or removing WS_DISABLED and WS_VISIBLE acts at once, as do the view bits
    // of a list view.
    DWORD GetStyle() const;
    void ModifyStyle(DWORD remove, DWORD add);
    // Paints anew: invalidate, erase and update now. Any thread; from a worker it means "soon".
    void RedrawWindow();

    // Takes WS_DISABLED away or gives it.
    void EnableWindow(bool enable);
    bool IsWindowEnabled() const;
    void ShowWindow(int showCommand);  // SW_ constants
    void SetFocus();
    bool HasFocus() const;

    Rect GetWindowRect() const;         // screen coordinates
    Rect GetClientRect() const;         // origin 0,0
    void MoveWindow(const Rect& rect);  // parent's client coordinates; the screen's for top-level windows

    // A control of this window by id; null when the template has none. The typed form is null also when the
    // control is of another kind. A template's controls belong to this window. Their objects stay, without
    // windows, until this window is made anew or its object goes, so that a worker that is about to end may
    // still call what any thread may call.
    CWnd* GetDlgItem(unsigned int id) const;
    template <class Control>
    Control* GetDlgItem(unsigned int id) const {
        return dynamic_cast<Control*>(GetDlgItem(id));
    }

    // Destroys the window (and its controls); the object stays and may be given a new one.
    void DestroyWindow();

  protected:
    // Window messages. The defaults do what the window's kind does.
    virtual void OnDestroy() {}  // the window is about to go
    virtual void OnSize(Size /*client*/) {}
    virtual void OnPaint(CDC& /*dc*/) {}  // after the background, before nothing else
    virtual Handled OnMouseMove(Point /*client*/) { return Handled::kNo; }
    virtual Handled OnLButtonDown(Point /*client*/) { return Handled::kNo; }
    virtual void OnSetFocus() {}

  private:
    friend class NativeWindow;
    friend struct WindowAccess;  // lets the framework's own sources reach what the back end needs

    void ReleaseWindow();  // without telling the window of it

    std::unique_ptr<NativeWindow, NativeWindowDeleter> native;
    CWnd* parent = nullptr;
    unsigned int controlId = 0;
    std::vector<CWnd*> children;                       // all child windows, in the order of their making
    std::vector<std::unique_ptr<CWnd>> ownedControls;  // those that came from the template
};

// Runs `work` on the user-interface thread: at once when called there, else after the messages before it,
// without waiting (Post) or waiting until it is done (Call). Call must not be used by a worker that the
// user-interface thread is waiting for.
void PostToUiThread(std::function<void()> work);
void CallOnUiThread(const std::function<void()>& work);
bool IsUiThread();

}  // namespace permora
