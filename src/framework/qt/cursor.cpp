#include <QApplication>
#include <QCursor>
#include <QWidget>

#include "framework/frame_window.h"

namespace permora {

void SetCursor(Cursor cursor) {
    QWidget* under = QApplication::widgetAt(QCursor::pos());
    if (under == nullptr) return;
    if (cursor == Cursor::kHand)
        under->setCursor(Qt::PointingHandCursor);
    else
        under->unsetCursor();
}

}  // namespace permora
