#include "cli/interrupts.h"

#include <csignal>
#include <string>

namespace permora {
namespace {

static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait");
std::atomic<bool> isInterrupted = false;

void TakeInterrupt(int signal) {
    isInterrupted = true;
    std::signal(signal, SIG_DFL);
}

}  // namespace

void WatchForInterrupts() {
    std::signal(SIGINT, TakeInterrupt);
    std::signal(SIGTERM, TakeInterrupt);
#ifdef SIGHUP
    // The parent may have started the program to outlive its terminal (nohup).
    if (std::signal(SIGHUP, TakeInterrupt) == SIG_IGN) std::signal(SIGHUP, SIG_IGN);
#endif
}

const std::atomic<bool>& IsInterrupted() {
    return isInterrupted;
}

void SayInterrupted(ConsoleMessages& messages, const char* rest) {
    messages.SetSubject("");
    messages.Say(std::string("interrupted: ") + rest);
}

void OutliveReaders() {
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

}  // namespace permora
