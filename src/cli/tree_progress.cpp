#include "cli/tree_progress.h"

#include <cstdio>

#include "cli/interrupts.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/terminal.h"
#include "platform/volume_loss.h"

namespace permora {
ProgressLine::ProgressLine(Progress mode) : columns(mode == Progress::kQuiet ? 0 : TerminalColumns(stderr)) {}

bool ProgressLine::IsDue() const {
    return columns != 0 && std::chrono::steady_clock::now() - shown >= std::chrono::milliseconds(100);
}

void ProgressLine::ShowNow(const std::string& state, std::string_view name) {
    shown = std::chrono::steady_clock::now();
    // The last column stays empty: a character in it would begin a new line.
    const std::string line = CutToColumns(state + ": " + PrintableText(name), columns - 1);
    OverwriteErrorLine(line);
    isShown = true;
}

void ProgressLine::Clear() {
    if (isShown) OverwriteErrorLine("");
    isShown = false;
}

TreeProgress::TreeProgress(Progress line, PassedOver passedOver, ConsoleMessages& console)
    : mode(passedOver), messages(console), progress(line) {}

void TreeProgress::EndTarget(const Outcome& outcome, TreeCounts& counts) {
    if (outcome.IsDone() || outcome.code == ERROR_OPERATION_ABORTED) return;
    ++counts.passedOver;
    progress.Clear();
    messages.SetSubject(target->argument);
    if (IsVolumeLost(outcome.code))
        messages.Say("what is in it was not changed to its end: " + LineText(outcome), outcome.code);
    else
        messages.Say(outcome);
}

bool TreeProgress::Begin(const char* name) {
    if (IsInterrupted()) return false;
    progress.Show(++count, name);
    return true;
}

void TreeProgress::PassOver(const std::string& path, DWORD error) {
    if (mode == PassedOver::kCounted) return;
    progress.Clear();
    messages.SetSubject(TypedPath(*target, path));
    if (error == kHasFurtherNames) {
        messages.Say("not changed: it has further names (hard links) (--linked changes it under all of them)",
                     error);
    } else {
        messages.SaySystemError(error);
    }
}

bool EndTrees(const TreeCounts& counts, ChangeMode mode, ConsoleMessages& messages) {
    messages.PrintForPeople((mode == ChangeMode::kDryRun ? "would change: " : "changed: ") +
                            std::to_string(counts.changed) +
                            ", already so: " + std::to_string(counts.unchanged) +
                            ", passed over: " + std::to_string(counts.passedOver) + '\n');
    if (IsInterrupted()) SayInterrupted(messages);
    return counts.passedOver == 0 && !IsInterrupted();
}

}  // namespace permora
