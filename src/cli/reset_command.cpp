#include "cli/reset_command.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "cli/listing.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/terminal.h"
#include "security/tree_apply.h"

namespace permora {
namespace {

volatile std::sig_atomic_t isInterrupted = 0;

// A second interrupt ends the program at once.
void TakeInterrupt(int signal) {
    isInterrupted = 1;
    std::signal(signal, SIG_DFL);
}

// One line on the terminal that is written over again and again, at most ten times a second, so that the
// terminal never slows the walk.
class ProgressLine {
  public:
    explicit ProgressLine(bool isQuiet) : columns(isQuiet ? 0 : TerminalColumns(stderr)) {}
    ~ProgressLine() { Clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void Show(std::size_t count, const char* name) {
        if (columns == 0) return;
        const auto now = std::chrono::steady_clock::now();
        if (now - shown < std::chrono::milliseconds(100)) return;
        shown = now;
        // The last column stays free: a character in it would begin a new line.
        const std::string line =
            CutToColumns(std::to_string(count) + ": " + PrintableText(name), columns - 1);
        std::fprintf(stderr, "\r%s\x1b[K", line.c_str());
        isShown = true;
    }

    void Clear() {
        if (isShown) std::fputs("\r\x1b[K", stderr);
        isShown = false;
    }

  private:
    unsigned columns;
    std::chrono::steady_clock::time_point shown;
    bool isShown = false;
};

class ResetObserver : public TreeListObserver {
  public:
    ResetObserver(const Arguments& userArguments, ConsoleMessages& console)
        : arguments(userArguments), messages(console), progress(userArguments.quiet) {}

    void SetTarget(const Target& next) { target = &next; }

    bool Begin(const char* name) override {
        if (isInterrupted != 0) return false;
        progress.Show(++count, name);
        return true;
    }

    void PassOver(const std::string& path, DWORD error) override {
        const bool isTarget = path == target->name;
        if (!isTarget && !arguments.verbose) return;
        progress.Clear();
        messages.SetSubject(AsTyped(path));
        messages.SaySystemError(error);
    }

  private:
    // The path under the target's name as the user typed it, with separators of the same kind.
    std::string AsTyped(const std::string& path) const {
        const std::string& typed = target->argument;
        const std::size_t start = path.find_first_not_of('\\', target->name.size());
        if (start == path.npos) return typed;
        std::string below = path.substr(start);
        const char separator = typed.find('\\') == typed.npos ? '/' : '\\';
        std::replace(below.begin(), below.end(), '\\', separator);
        const bool endsWithSeparator = typed.find_last_of("/\\") + 1 == typed.size();
        return typed + (endsWithSeparator ? "" : std::string(1, separator)) + below;
    }

    const Arguments& arguments;
    ConsoleMessages& messages;
    ProgressLine progress;
    const Target* target = nullptr;
    std::size_t count = 0;
};

bool HandsAnythingDown(const AccessEntryList& entries) {
    return std::any_of(entries.Entries().begin(), entries.Entries().end(), [](const AccessEntry& entry) {
        return (entry.aceFlags & (OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE)) != 0;
    });
}

// Whether what is below the target may be reset; says why not.
bool MayReset(const Arguments& arguments, const Target& target, ConsoleMessages& messages) {
    const DWORD error = EnterFolder(target);
    if (error != ERROR_SUCCESS || GetFileAttributesA(target.name.c_str()) == INVALID_FILE_ATTRIBUTES) {
        messages.SaySystemError(error != ERROR_SUCCESS ? error : GetLastError());
        return false;
    }
    if (!IsFolder(target)) {
        messages.Say("not reset: it is no folder, so nothing is below it");
        return false;
    }
    ObjectSecurity object;
    if (!ReadObjectDacl(nullptr, target.name.c_str(), target.place, object)) {
        if (!messages.HasSpoken()) messages.Say("its access list cannot be read");
        return false;
    }
    if (arguments.emptyLists || HandsAnythingDown(object.entries)) return true;
    messages.Say(
        "not reset: it hands no entries down, so afterwards nobody would have access to what is below it "
        "(--empty-lists does it all the same)");
    return false;
}

void PrintCounts(const TreeListCounts& counts, bool isDryRun) {
    Print((isDryRun ? "would change: " : "changed: ") + std::to_string(counts.changed) + ", already so: " +
          std::to_string(counts.unchanged) + ", passed over: " + std::to_string(counts.passedOver) + '\n');
}

}  // namespace

bool ConfirmReset(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages) {
    if (arguments.dryRun || arguments.yes || targets.empty()) return true;
    messages.SetSubject("");
    if (TerminalColumns(stdin) == 0) {
        messages.Say(
            "reset removes every entry that is set below the folders: it needs --yes where nobody "
            "can be asked");
        return false;
    }
    std::fputs("Everything below these folders loses the entries set for it and keeps what it inherits:\n",
               stderr);
    for (const Target& target : targets)
        std::fprintf(stderr, "  %s\n", PrintableText(target.argument).c_str());
    std::fputs("Go on (yes or no)? ", stderr);
    std::array<char, 16> answer{};
    if (std::fgets(answer.data(), answer.size(), stdin) != nullptr &&
        (std::strcmp(answer.data(), "yes\n") == 0 || std::strcmp(answer.data(), "y\n") == 0)) {
        return true;
    }
    messages.Say("nothing was changed");
    return false;
}

bool RunReset(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages) {
    std::signal(SIGINT, TakeInterrupt);
    const TreeListMode mode = arguments.dryRun ? TreeListMode::kCountOnly : TreeListMode::kWrite;
    TreeListCounts counts;
    bool allDone = true;
    TreeApplyResult result = TreeApplyResult::kDone;
    {
        ResetObserver observer(arguments, messages);
        for (const Target& target : targets) {
            if (isInterrupted != 0 || result != TreeApplyResult::kDone) break;
            messages.SetSubject(target.argument);
            if (!MayReset(arguments, target, messages)) {
                allDone = false;
                continue;
            }
            observer.SetTarget(target);
            const std::array<const char*, 1> names = {target.name.c_str()};
            result = ApplyToTrees(nullptr, names, mode, observer, counts);
        }
    }
    PrintCounts(counts, arguments.dryRun);
    if (isInterrupted != 0) {
        messages.SetSubject("");
        messages.Say("interrupted: the rest is as it was");
    }
    return allDone && isInterrupted == 0 && result == TreeApplyResult::kDone && counts.passedOver == 0;
}

}  // namespace permora
