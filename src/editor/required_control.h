// The controls without which a dialog or page of the editor cannot work.
#pragma once

#include "framework/window.h"
#include "security/message_boxes.h"

namespace permora {

// The control of `window` with this id. Without one of this kind, a box with `text` is shown and the process
// ends.
template <typename Control>
Control& RequiredControl(const CWnd& window, unsigned int id,
                         const char* text = "Error: cannot initialize dialog box") {
    auto* control = window.GetDlgItem<Control>(id);
    if (control == nullptr) ShowFatalErrorBox(window.GetSafeHwnd(), text);
    return *control;
}

}  // namespace permora
