#include <QApplication>
#include <QCursor>
#include <QWidget>

#include "framework/frame_window.h"

namespace permora {

void SetCursor(Cursor cursor) {
    const bool isWaiting = QGuiApplication::overrideCursor() != nullptr;
    if (cursor == Cursor::kWait) {
        if (!isWaiting) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        return;
    }
    if (isWaiting) QGuiApplication::restoreOverrideCursor();
    QWidget* under = QApplication::widgetAt(QCursor::pos());
    if (under == nullptr) return;
    if (cursor == Cursor::kHand) {
        under->setCursor(Qt::PointingHandCursor);
    } else {
        under->unsetCursor();
    }
}

}  // namespace permora
