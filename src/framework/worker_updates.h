// Updates of windows by worker threads, kept until the display paints, so that a worker never waits.
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
// Any thread: runs `work` on the user-interface thread soon, unless `window` is destroyed first. Work that
// still waits for the same window is replaced. The object of the window must outlive the call.
void QueueWork(CWnd& window, std::function<void()> work);
// The text that waits for `window`.
std::optional<std::string> QueuedText(const CWnd& window);
// Drops the text that waits for `window`, since there is a newer one.
void ForgetQueuedText(const CWnd& window);
// Drops everything that waits for `window`, which is being destroyed.
void ForgetQueued(const CWnd& window);

}  // namespace permora
