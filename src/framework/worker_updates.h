// What worker threads want shown in windows: kept until the display paints, so that a worker never waits.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "framework/window.h"

namespace permora {

// Any thread: shows `text` in `window` soon. A text that is still waiting for the same window is replaced.
void QueueText(CWnd& window, const std::string& text);
// Any thread: paints `window` soon.
void QueueRedraw(CWnd& window);
// Any thread: runs `work` on the user-interface thread soon, unless `window` goes before; work that is still
// waiting for the same window is replaced. The object of the window must outlive the call.
void QueueWork(CWnd& window, std::function<void()> work);
// The text that waits for `window`.
std::optional<std::string> QueuedText(const CWnd& window);
// Drops the text that waits for `window`: a newer one is there.
void ForgetQueuedText(const CWnd& window);
// Drops all that waits for `window`, which goes.
void ForgetQueued(const CWnd& window);

}  // namespace permora
