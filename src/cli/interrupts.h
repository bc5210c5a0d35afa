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
// `rest` describes the state of the objects that were not reached.
void SayInterrupted(ConsoleMessages& messages, const char* rest = "the rest is as it was");

// From now on, the program does not end when its output has no reader (SIGPIPE), for work that must not be
// cut off. IsAllPrinted reports it.
void OutliveReaders();

}  // namespace permora
