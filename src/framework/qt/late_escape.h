// An Escape that comes when a modal window has just closed was meant for that one: typed twice, held, or
// waiting while the program worked.
#pragma once

#include <QWidget>

namespace permora::qt {

// Keeps in mind when `window` got the keyboard back from a modal window.
void WatchForLateEscape(QWidget& window);

// Whether an Escape that comes to `widget` now was meant for another window. Its window is watched.
bool IsLateEscape(const QWidget& widget);

}  // namespace permora::qt
