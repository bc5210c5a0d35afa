// Keeps windows reachable.
#pragma once

#include <span>

#include "framework/geometry.h"

namespace permora {

// `wanted`, moved and made smaller so far that it stands on one of `screens`: the one that it shares the
// largest area with, or the first. A window that a stored rectangle puts where no screen is could not be
// used.
Rect PutOnScreen(const Rect& wanted, std::span<const Rect> screens);

}  // namespace permora
