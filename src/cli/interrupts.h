// How the user ends long work, and what else must not end it.
#pragma once

#include <atomic>

#include "cli/messages.h"

namespace permora {

// From now on the first Ctrl-C, like the other signals to end (SIGTERM, a terminal that closes), ends the
// work between two objects. A second one ends the program at once.
void WatchForInterrupts();
// Set by the first such signal; lives as long as the program.
const std::atomic<bool>& IsInterrupted();
// `rest` says how what was not reached is.
void SayInterrupted(ConsoleMessages& messages, const char* rest = "the rest is as it was");

// From now on the program does not end when nobody reads any more what it writes (SIGPIPE), for work that
// must not end in its middle. IsAllPrinted tells of it.
void OutliveReaders();

}  // namespace permora
