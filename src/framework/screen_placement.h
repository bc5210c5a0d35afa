// Keeps windows reachable.
#pragma once

#include <span>

#include "framework/geometry.h"

namespace permora {

// Moves and shrinks `wanted` so that it fits on one of `screens`: the one with which it shares the largest
// area, or the first. A stored rectangle may lie where no screen is any more.
Rect PutOnScreen(const Rect& wanted, std::span<const Rect> screens);

}  // namespace permora
