// The signals by which a session, a terminal or an administrator ends a program.
#pragma once

#include <QSocketNotifier>
#include <functional>

namespace permora::qt {

// One at a time, on the user-interface thread.
//
// The first of SIGTERM, SIGINT and SIGHUP runs `end` on the user-interface thread. From then on, the process
// has ten seconds, and a second such signal ends it at once: nothing may delay the end of the session, not
// even a walk that cannot be stopped. Signals that were ignored when the process started (`nohup`) stay
// ignored.
class EndSignals {
  public:
    explicit EndSignals(std::function<void()> end);
    ~EndSignals();
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

  private:
    QSocketNotifier notifier;
};

}  // namespace permora::qt
