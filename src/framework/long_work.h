// Work that may take long and that its caller must see done: a change that is carried to a million objects, a
// service that asks a server.
#pragma once

#include <functional>

#include "framework/window.h"

namespace permora {

// Runs `work` and returns when it has. It has a thread of its own, so that the windows go on being painted
// and the desktop sees that the program lives: it must not touch windows but as workers may, and its last
// error is its own. `window` counts as disabled meanwhile, and what the user does in the program's windows is
// dropped, not kept for later; message boxes of the work are answered as ever. Where no thread can be had the
// work runs on this one. User-interface thread.
void DoLongWork(CWnd& window, const std::function<void()>& work);

}  // namespace permora
