#include "framework/qt/late_escape.h"

#include <QVariant>
#include <chrono>

#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kGivenBack[] = "permoraGivenBack";  // a time of the clock, in its ticks

// What was typed while the program worked comes after the activation, which waited as well.
class GivenBackWatch {
  public:
    explicit GivenBackWatch(QWidget& watched) : window(watched) {}
    bool operator()(const QEvent& event) {
        const bool isUnblocked = event.type() == QEvent::WindowUnblocked;
        const bool isActivated = event.type() == QEvent::WindowActivate;
        if (isUnblocked || (isActivated && awaitsActivation))
            window.setProperty(kGivenBack, qlonglong{Clock::now().time_since_epoch().count()});
        if (isUnblocked || isActivated) awaitsActivation = isUnblocked;
        return false;
    }

  private:
    QWidget& window;
    bool awaitsActivation = false;
};

}  // namespace

void WatchForLateEscape(QWidget& window) {
    auto* filter = new EventFilter(window, GivenBackWatch(window));
    filter->setParent(&window);
}

bool IsLateEscape(const QWidget& widget) {
    constexpr std::chrono::milliseconds kMoment(400);
    const QVariant givenBack = widget.window()->property(kGivenBack);
    if (!givenBack.isValid()) return false;
    const Clock::time_point time{Clock::duration(givenBack.toLongLong())};
    return Clock::now() - time < kMoment;
}

}  // namespace permora::qt
