#include "framework/qt/late_escape.h"

#include <QKeyEvent>
#include <QVariant>
#include <chrono>

#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kGivenBack[] = "permoraGivenBack";  // a time of the clock, in its ticks

bool IsEscape(const QEvent& event, QEvent::Type type) {
    return event.type() == type && static_cast<const QKeyEvent&>(event).key() == Qt::Key_Escape;
}

// Keys that were typed while the program worked arrive after the activation, which waited as well.
class GivenBackWatch {
  public:
    explicit GivenBackWatch(QWidget& watched) : window(watched) {}
    bool operator()(const QEvent& event) {
        const bool isUnblocked = event.type() == QEvent::WindowUnblocked;
        const bool isActivated = event.type() == QEvent::WindowActivate;
        const bool isStillHeld = IsHeldEscape(event) && IsLateEscape(window);
        if (IsEscape(event, QEvent::KeyRelease)) released = static_cast<const QKeyEvent&>(event).timestamp();
        if (isUnblocked || (isActivated && awaitsActivation) || isStillHeld)
            window.setProperty(kGivenBack, qlonglong{Clock::now().time_since_epoch().count()});
        if (isUnblocked || isActivated) awaitsActivation = isUnblocked;
        return false;
    }

  private:
    // The display reports a repetition as a release and a press at the same time. The toolkit does not
    // recognise all of them.
    bool IsHeldEscape(const QEvent& event) const {
        if (!IsEscape(event, QEvent::ShortcutOverride)) return false;
        const auto& key = static_cast<const QKeyEvent&>(event);
        return key.isAutoRepeat() || (released != 0 && key.timestamp() == released);
    }

    QWidget& window;
    quint64 released = 0;  // Escape, at last
    bool awaitsActivation = false;
};

}  // namespace

void WatchForLateEscape(QWidget& window) {
    auto* filter = new EventFilter(window, GivenBackWatch(window));
    filter->setParent(&window);
}

bool IsLateEscape(const QWidget& widget) {
    // Longer than the delay before a held key repeats. Not every repetition can be recognised.
    constexpr std::chrono::milliseconds kMoment(750);
    const QVariant givenBack = widget.window()->property(kGivenBack);
    if (!givenBack.isValid()) return false;
    const Clock::time_point time{Clock::duration(givenBack.toLongLong())};
    return Clock::now() - time < kMoment;
}

}  // namespace permora::qt
