#include "framework/qt/end_signals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <utility>

namespace permora::qt {
namespace {

constexpr std::array<int, 3> kEndSignals{SIGTERM, SIGINT, SIGHUP};
constexpr unsigned int kSecondsToEnd = 10;

// The handler writes to it. It stays open for the whole process: a signal may arrive while the object is
// destroyed.
int endDescriptor = -1;

int OpenEndDescriptor() {
    if (endDescriptor < 0) endDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return endDescriptor;
}

void TellOfEnd(int /*signal*/) {
    const int kept = errno;
    const std::uint64_t one = 1;
    // When it cannot be written, the process ends with the alarm.
    static_cast<void>(!write(endDescriptor, &one, sizeof one));
    alarm(kSecondsToEnd);
    errno = kept;
}

// Each signal once: SA_RESETHAND restores its default action.
void Handle(int signal) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) return;
    struct sigaction handled {};
    handled.sa_handler = TellOfEnd;
    handled.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigaction(signal, &handled, nullptr);
}

void StopHandling(int signal) {
    struct sigaction now {};
    if (sigaction(signal, nullptr, &now) == 0 && now.sa_handler == TellOfEnd) std::signal(signal, SIG_DFL);
}

}  // namespace

EndSignals::EndSignals(std::function<void()> end) : notifier(OpenEndDescriptor(), QSocketNotifier::Read) {
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [this, end = std::move(end)] {
        notifier.setEnabled(false);
        end();
    });
    // The reader of a pipe may have ended at the same signal.
    std::signal(SIGPIPE, SIG_IGN);
    for (const int signal : kEndSignals)
        Handle(signal);
}

EndSignals::~EndSignals() {
    for (const int signal : kEndSignals)
        StopHandling(signal);
}

}  // namespace permora::qt
