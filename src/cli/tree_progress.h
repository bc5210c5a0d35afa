// What is said while a whole tree is changed, and how the user ends it.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"
#include "platform/tree_security.h"

namespace permora {

// From now on the first Ctrl-C, like the other signals to end (SIGTERM, a terminal that closes), ends walks
// between two objects. A second one ends the program at once.
void WatchForInterrupts();
// Set by the first such signal; lives as long as the program.
const std::atomic<bool>& IsInterrupted();
// From now on the program does not end when nobody reads any more what it writes (SIGPIPE), for work that
// must not end in its middle. IsAllPrinted tells of it.
void OutliveReaders();
// `rest` says how what was not reached is.
void SayInterrupted(ConsoleMessages& messages, const char* rest = "the rest is as it was");

// One line on the terminal that is written over again and again, at most ten times a second, so that the
// terminal never slows the walk.
class ProgressLine {
  public:
    explicit ProgressLine(bool isQuiet);
    ~ProgressLine() { Clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void Show(std::size_t count, const char* name);
    void Clear();

  private:
    unsigned columns;
    std::chrono::steady_clock::time_point shown;
    bool isShown = false;
};

// Shows the object that the walk has come to, and names those that it passes over as the user would type
// them: always the target itself, the others when the arguments say so (verbose).
class TreeProgress : public TreeObserver {
  public:
    TreeProgress(const Arguments& userArguments, ConsoleMessages& console);

    void SetTarget(const Target& next) { target = &next; }

    bool Begin(const char* name) override;
    void PassOver(const std::string& path, DWORD error) override;

  private:
    const Arguments& arguments;
    ConsoleMessages& messages;
    ProgressLine progress;
    const Target* target = nullptr;
    std::size_t count = 0;
};

void PrintCounts(const TreeCounts& counts, bool isDryRun);

}  // namespace permora
