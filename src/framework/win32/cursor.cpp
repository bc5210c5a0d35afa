#include "framework/frame_window.h"

namespace permora {

// Until the pointer moves again, when the window below it decides anew.
void SetCursor(Cursor cursor) {
    ::SetCursor(LoadCursorA(nullptr, cursor == Cursor::kHand ? IDC_HAND : IDC_ARROW));
}

}  // namespace permora
