// Who shows the message boxes of this process.
//
// MessageBoxA asks the presenter that is set here. The default writes the text to standard error and answers
// with the safest button. The windowed program sets one that
// opens a dialog, the terminal program one that names the object at fault, tests one that records. On Windows
// the system shows its own boxes and this header has nothing behind it.
#pragma once

#include "platform/api/messages.h"

namespace permora {

// The button that changes least, or 0 when boxes have no such set of buttons.
constexpr int SafestButton(UINT type) {
    constexpr UINT kButtonsMask = 0x0F;  // the buttons are the lowest four bits of a box's type
    switch (type & kButtonsMask) {
        case MB_OK:
            return IDOK;
        case MB_YESNOCANCEL:
            return IDCANCEL;
        case MB_YESNO:
            return IDNO;
        default:
            return 0;
    }
}

class MessagePresenter {
  public:
    virtual ~MessagePresenter() = default;
    // Shows one box; `text` and `caption` are never null and live for the call. Returns the id of the button
    // chosen.
    virtual int Present(HWND owner, const char* text, const char* caption, UINT type) = 0;
};

// Sets the presenter (borrowed; null restores the default) and returns the one before it (null for the
// default). Thread-safe; a presenter must outlive the boxes that it shows.
MessagePresenter* SetMessagePresenter(MessagePresenter* presenter);

}  // namespace permora
