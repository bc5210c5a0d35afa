// Work that may take long and that its caller waits for: a change of a million objects, a request to a
// server.
#pragma once

#include <functional>

#include "framework/window.h"

namespace permora {

// Runs `work` on a thread of its own and returns when it has ended. Meanwhile windows are painted, `window`
// counts as disabled, and input of the user in the program's windows is dropped; message boxes of the work
// take input as usual. `work` may use windows only as workers may, and has its own last error. If no thread
// can be made, the work runs on this one. User-interface thread.
void DoLongWork(CWnd& window, const std::function<void()>& work);

}  // namespace permora
