// What worker threads want shown in windows: kept until the display paints, so that a worker never waits.
#pragma once

#include <optional>
#include <string>

#include "framework/window.h"

namespace permora {

// Any thread: shows `text` in `window` soon. A text that is still waiting for the same window is replaced.
void QueueText(CWnd& window, const std::string& text);
// Any thread: paints `window` soon.
void QueueRedraw(CWnd& window);
// The text that waits for `window`.
std::optional<std::string> QueuedText(const CWnd& window);
// Drops what waits for `window`: a newer text is there, or the window goes.
void ForgetQueued(const CWnd& window);

}  // namespace permora
