#include "framework/qt/busy_windows.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <chrono>

#include "framework/native.h"
#include "framework/qt/application.h"

namespace permora {
namespace {

bool IsFromUser(const QEvent& event) {
    switch (event.type()) {
        case QEvent::Close:
            return event.spontaneous();  // the title bar's close box
        case QEvent::Shortcut:
        case QEvent::InputMethod:
            return true;
        // Widgets must know afterwards whether the pointer is over them.
        case QEvent::Enter:
        case QEvent::HoverEnter:
        case QEvent::HoverMove:
        case QEvent::HoverLeave:
            return false;
        default:
            return event.isInputEvent();
    }
}

// While it exists, input of the user is dropped, except in a modal window that opens meanwhile.
class InputBarrier : public QObject {
  public:
    InputBarrier() { qApp->installEventFilter(this); }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (!IsFromUser(*event) || QApplication::activeModalWidget() != modalBefore) return false;
        event->ignore();
        return true;
    }

  private:
    const QWidget* const modalBefore = QApplication::activeModalWidget();
};

void ServeUntil(const std::function<bool()>& hasEnded, QEventLoop::ProcessEventsFlags flags) {
    const InputBarrier barrier;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    while (!hasEnded())
        QCoreApplication::processEvents(flags);
    QApplication::restoreOverrideCursor();
}

}  // namespace

void ServeBusyWindowsUntil(const std::function<bool()>& hasEnded) {
    ServeUntil(hasEnded, QEventLoop::AllEvents);
}

// What remains for the barrier is a window's close box, which is no input to the toolkit.
void qt::ServeBeforeInputUntil(const std::function<bool()>& hasEnded) {
    ServeUntil(hasEnded, QEventLoop::ExcludeUserInputEvents);
}

void qt::DropInput() {
    const InputBarrier barrier;
    QCoreApplication::processEvents();
}

// The end of the program ends all loops of the toolkit.
void ServeWindowsUntil(const std::function<bool()>& hasEnded) {
    constexpr std::chrono::milliseconds kPace{5};
    if (QtApplication::Current()->isToEnd) return;
    QEventLoop loop;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        if (hasEnded()) loop.quit();
    });
    timer.start(kPace);
    QApplication::setOverrideCursor(Qt::BusyCursor);
    loop.exec();
    QApplication::restoreOverrideCursor();
}

}  // namespace permora
