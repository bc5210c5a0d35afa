// The controls without which a dialog or page of the editor cannot work.
#pragma once

#include "framework/window.h"
#include "security/message_boxes.h"

namespace permora {

// The control of `window` with this id. When the template has none of this kind the process ends, after a box
// with `text`.
template <typename Control>
Control& RequiredControl(const CWnd& window, unsigned int id,
                         const char* text = "Error: cannot initialize dialog box") {
    auto* control = window.GetDlgItem<Control>(id);
    if (control == nullptr) ShowFatalErrorBox(window.GetSafeHwnd(), text);
    return *control;
}

}  // namespace permora
