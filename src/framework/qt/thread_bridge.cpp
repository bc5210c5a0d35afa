#include "framework/qt/thread_bridge.h"

#include <QCoreApplication>
#include <QEvent>
#include <utility>

namespace permora::qt {

void ThreadBridge::Post(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex);
        posted.push_back(std::move(work));
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void ThreadBridge::Serve() {
    QCoreApplication::sendPostedEvents(this, QEvent::User);
}

// One event for each piece of work, so that other events in the toolkit's queue keep their order.
void ThreadBridge::customEvent(QEvent* /*event*/) {
    std::function<void()> work;
    {
        const std::lock_guard lock(mutex);
        if (posted.empty()) return;
        work = std::move(posted.front());
        posted.pop_front();
    }
    work();
}

}  // namespace permora::qt
