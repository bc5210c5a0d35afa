#include "cli/tree_progress.h"

#include <csignal>
#include <cstdio>

#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/terminal.h"

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
    // Who started the program may have it outlive its terminal.
    if (std::signal(SIGHUP, TakeInterrupt) == SIG_IGN) std::signal(SIGHUP, SIG_IGN);
#endif
}

void OutliveReaders() {
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

const std::atomic<bool>& IsInterrupted() {
    return isInterrupted;
}

void SayInterrupted(ConsoleMessages& messages, const char* rest) {
    messages.SetSubject("");
    messages.Say(std::string("interrupted: ") + rest);
}

ProgressLine::ProgressLine(bool isQuiet) : columns(isQuiet ? 0 : TerminalColumns(stderr)) {}

void ProgressLine::Show(std::size_t count, const char* name) {
    if (columns == 0) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - shown < std::chrono::milliseconds(100)) return;
    shown = now;
    // The last column stays free: a character in it would begin a new line.
    const std::string line = CutToColumns(std::to_string(count) + ": " + PrintableText(name), columns - 1);
    OverwriteErrorLine(line);
    isShown = true;
}

void ProgressLine::Clear() {
    if (isShown) OverwriteErrorLine("");
    isShown = false;
}

TreeProgress::TreeProgress(const Arguments& userArguments, ConsoleMessages& console)
    : arguments(userArguments), messages(console), progress(userArguments.quiet) {}

bool TreeProgress::Begin(const char* name) {
    if (IsInterrupted()) return false;
    progress.Show(++count, name);
    return true;
}

void TreeProgress::PassOver(const std::string& path, DWORD error) {
    const bool isTarget = path.empty();
    if (!isTarget && !arguments.verbose) return;
    progress.Clear();
    messages.SetSubject(TypedPath(*target, path));
    if (error == kHasFurtherNames) {
        messages.Say(
            "not changed: it has further names (hard links) (--linked changes it under all of them)");
    } else {
        messages.SaySystemError(error);
    }
}

void PrintCounts(const TreeCounts& counts, bool isDryRun) {
    Print((isDryRun ? "would change: " : "changed: ") + std::to_string(counts.changed) + ", already so: " +
          std::to_string(counts.unchanged) + ", passed over: " + std::to_string(counts.passedOver) + '\n');
}

}  // namespace permora
