#include "framework/wait_cursor.h"

#include <QApplication>

namespace permora {

CWaitCursor::CWaitCursor() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

CWaitCursor::~CWaitCursor() {
    QApplication::restoreOverrideCursor();
}

void CWaitCursor::KeepAlive() {
    const auto now = std::chrono::steady_clock::now();
    if (now - served < std::chrono::milliseconds(100)) return;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    served = std::chrono::steady_clock::now();
}

}  // namespace permora
