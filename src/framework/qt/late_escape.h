// An Escape that arrives right after a modal window has closed was pressed for that window: typed twice,
// held, or waiting while the program worked.
#pragma once

#include <QWidget>

namespace permora::qt {

// Records when `window` gets the keyboard back from a modal window.
void WatchForLateEscape(QWidget& window);

// Whether an Escape that `widget` gets now was pressed for a modal window that has closed. Needs
// WatchForLateEscape for its window.
bool IsLateEscape(const QWidget& widget);

}  // namespace permora::qt
