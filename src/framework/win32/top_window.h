// What the top-level windows of this back end share: who has the keyboard in them, their tips, their
// resolution.
#pragma once

#include "framework/images.h"
#include "framework/win32/message_target.h"

namespace permora::win32 {

// Beside the window object of a dialog or a frame, which derives from this too.
class TopWindow {
  public:
    explicit TopWindow(MessageTarget& windowObject) : object(windowObject) {}
    TopWindow(const TopWindow&) = delete;
    TopWindow& operator=(const TopWindow&) = delete;
    virtual ~TopWindow() = default;

    // The one that `window` stands in, or is; null for others.
    static TopWindow* Around(HWND window);

    HWND Top() const { return object.Own(); }
    // A message of a window in this one, or its own, that has come from the thread's queue. True: it was used
    // up.
    virtual bool UseMessage(const MSG& message) = 0;
    // Gives the keyboard to the next control that takes it, or the one before, outside of `leaving`.
    virtual void MoveFocus(int direction, HWND leaving = nullptr) = 0;
    // Another window in this one has got the keyboard.
    virtual void OnFocusMoved() {}
    // The child window that has the keyboard whenever this window is active.
    void KeepFocus(HWND child) { keptFocus = child; }
    HWND TipWindow();

    void ShowIcon(const CIcon& icon);

  protected:
    // True when the window has become active and no control has taken the keyboard.
    bool TakeActivation(bool isActive);
    // Once the window has been made.
    void Dress(const CIcon& icon);
    // What concerns the desktop: its colours, and the resolution of the display that the window is on. True:
    // it has been answered.
    bool FollowDesktop(const Message& message) const;

  private:
    void FollowResolution(const RECT& suggested) const;

    MessageTarget& object;
    CIcon shownIcon;  // has the pictures that the window shows
    HWND keptFocus = nullptr;
    HWND tips = nullptr;
};

}  // namespace permora::win32
