// What stands behind a window of the system: it gets the window's messages before the window's own class
// does.
#pragma once

#include <optional>

#include "platform/api/base.h"

namespace permora::win32 {

struct Message {
    UINT code = 0;
    WPARAM wide = 0;
    LPARAM wider = 0;
};

// Who gets a key that was pressed in a control.
enum class KeyUse { kDialog, kControl, kTaken };

class MessageTarget {
  public:
    MessageTarget() = default;
    MessageTarget(const MessageTarget&) = delete;
    MessageTarget& operator=(const MessageTarget&) = delete;
    virtual ~MessageTarget();  // destroys the window, if the system has not

    // Null for windows of others.
    static MessageTarget* Of(HWND window);
    HWND Own() const { return own; }  // null when the system has destroyed the window

    // A key was pressed in the window, which is a control: before the dialog's rules apply.
    virtual KeyUse OnDialogKey(UINT /*virtualKey*/) { return KeyUse::kDialog; }
    // Whether a key is one of the window's own, though its frame has a command for it.
    virtual bool KeepsKey(UINT /*virtualKey*/) const { return false; }
    // The display has another resolution: the font and the place follow it.
    virtual void OnOtherResolution() {}

  protected:
    // Takes the window over.
    void Adopt(HWND made);
    // Destroys the window, which says nothing to this object any more.
    void DestroyOwn();

    // A handler of the program may destroy the object, so nothing may use it after a report.
    virtual LRESULT OnMessage(const Message& message) { return Default(message); }
    // What the window sends to its parent about itself: notifications, questions for colours, drawing.
    virtual std::optional<LRESULT> OnReflected(const Message& /*message*/) { return std::nullopt; }
    // What the window's class does.
    LRESULT Default(const Message& message) const;

  private:
    static LRESULT CALLBACK Receive(HWND window, UINT code, WPARAM wide, LPARAM wider, UINT_PTR id,
                                    DWORD_PTR self);

    HWND own = nullptr;
};

}  // namespace permora::win32
