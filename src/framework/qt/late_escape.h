// An Escape that comes when a modal window has just closed was meant for that one: typed twice, held, or
// waiting while the program worked.
#pragma once

#include <QWidget>

namespace permora::qt {

// Records when `window` gets the keyboard back from a modal window.
void WatchForLateEscape(QWidget& window);

// Whether an Escape that comes to `widget` now was meant for a modal window before. Needs WatchForLateEscape
// for its window.
bool IsLateEscape(const QWidget& widget);

}  // namespace permora::qt
