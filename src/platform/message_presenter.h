// Who shows the message boxes of this process (platform/presenters.h).
#pragma once

#include "platform/api/messages.h"
#include "platform/presenters.h"

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

}  // namespace permora
