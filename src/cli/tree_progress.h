// The output while a whole tree is changed.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "cli/command.h"
#include "cli/messages.h"
#include "cli/target.h"
#include "platform/tree_security.h"
#include "security/outcome.h"

namespace permora {

// --quiet.
struct QuietFlag : Flag {
    explicit QuietFlag(OptionPlace place) : Flag(place, "--quiet", "No progress line on a terminal") {}
};

enum class Progress { kShown, kQuiet };

// One line on the terminal that is written over again and again, at most ten times a second, so that the
// terminal never slows the walk.
class ProgressLine {
  public:
    explicit ProgressLine(Progress mode);
    ~ProgressLine() { Clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void Show(std::size_t count, std::string_view name) {
        if (IsDue()) ShowNow(std::to_string(count), name);
    }
    // Whether there is a line at all.
    bool IsUsed() const { return columns != 0; }
    // Whether enough time has passed for another line, ...
    bool IsDue() const;
    // ... which is shown now: what is done so far, and the object at hand.
    void ShowNow(const std::string& state, std::string_view name);
    // Shows the last name of `path`, which has backslashes between its names.
    void ShowPath(std::size_t count, std::string_view path) {
        Show(count, path.substr(path.rfind('\\') + 1));
    }
    void Clear();

  private:
    unsigned columns;
    std::chrono::steady_clock::time_point shown;
    bool isShown = false;
};

enum class PassedOver { kNamed, kCounted };

// Shows the object that the walk has come to, and names those that it passes over as the user would type
// them: always the target itself, the others with kNamed.
class TreeProgress : public TreeObserver {
  public:
    TreeProgress(Progress mode, PassedOver passedOver, ConsoleMessages& console);

    // `next` is borrowed until the next call.
    void SetTarget(const Target& next) { target = &next; }
    // Ends the work on the target. A failure counts as one object that was passed over.
    void EndTarget(const Outcome& outcome, TreeCounts& counts);

    // Before something else is printed.
    void Clear() { progress.Clear(); }

    bool Begin(const char* name) override;
    void PassOver(const std::string& path, DWORD error) override;

  private:
    const PassedOver mode;
    ConsoleMessages& messages;
    ProgressLine progress;
    const Target* target = nullptr;
    std::size_t count = 0;
};

enum class ChangeMode { kWrite, kDryRun };

// Prints the end of the trees. Returns whether nothing was passed over and the user has not interrupted.
bool EndTrees(const TreeCounts& counts, ChangeMode mode, ConsoleMessages& messages);

}  // namespace permora
