// Which radio buttons belong together: those between one control with WS_GROUP and the next.
#pragma once

#include <vector>

#include "framework/window.h"

namespace permora {

bool IsRadioButton(const CWnd& control);

// The radio buttons of `button`'s group, itself among them, in the template's order.
std::vector<CWnd*> RadioGroupOf(CWnd& button);

}  // namespace permora
