// The signals by which a session, a terminal or an administrator ends a program.
#pragma once

#include <QSocketNotifier>
#include <functional>

namespace permora::qt {

// One at a time, on the user-interface thread.
//
// The first of SIGTERM, SIGINT and SIGHUP runs `end` on the user-interface thread. The process has ten
// seconds from then on, and a second such signal ends it at once: whatever it waits for, a walk that nobody
// can stop above all, holds no session up. Signals that whoever started the process has it ignore (`nohup`)
// stay ignored.
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
