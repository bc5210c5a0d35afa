// What a command that changes things says of its work: lines for people or one document for programs, and how
// it ends when it only checks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/json_output.h"
#include "cli/messages.h"
#include "cli/tree_progress.h"
#include "security/descriptor_comparison.h"

namespace permora {

// Of objects: what was changed or would be, what is already so, and what could not be changed or looked at.
struct ObjectCounts {
    std::uint64_t changed = 0;
    std::uint64_t already = 0;
    std::uint64_t failed = 0;

    ObjectCounts operator-(const ObjectCounts& earlier) const;
    ObjectCounts& operator+=(const ObjectCounts& more);
};

ObjectCounts CountsOf(const TreeCounts& counts);

// --json, --dry-run and --check.
//
// The document has a result for each object that the user has named (docs/json.md). All that is said
// meanwhile on standard error goes into it, too. It is kept in memory until the end, and holds a bounded
// number of parts.
class ChangeOutput : private MessageListener {
  public:
    // `dryRunDescription` is that of --dry-run in the help; null: the command does nothing but check.
    ChangeOutput(Command& owner, ConsoleMessages& console, const char* dryRunDescription);

    bool IsJson() const { return static_cast<bool>(json); }
    bool IsCheck() const { return !check || *check; }
    // With --dry-run or --check nothing is written.
    ChangeMode Mode() const { return IsCheck() || *dryRun ? ChangeMode::kDryRun : ChangeMode::kWrite; }
    bool IsDryRun() const { return Mode() == ChangeMode::kDryRun; }
    // Both are refused without the option.
    void DryRunNeeds(const Flag& option);
    void DryRunNeeds(const TextOption& option);
    ConsoleMessages& Messages() { return messages; }

    // From here on until Finish, messages are heard, and Print says nothing with --json.
    void Start();

    // The object that the user has named so comes next; then what becomes of it.
    void BeginObject(const std::string& path);
    // The same for what is below a folder, without the folder.
    void BeginBelow(const std::string& path);
    void SetChanged() { isChanged = true; }
    void SetFailed() { isFailed = true; }
    // The object stands for a tree, of which these are (more of) the objects.
    void Count(const ObjectCounts& objects);
    // What would become of an object of the tree.
    void AddDifference(const std::string& path, const std::vector<ComparedRow>& rows);
    // Another member of the object's result.
    void AddMember(const char* key, Json value);
    void EndObject(bool isDone);
    // Its turn comes later.
    void LeaveObject() { isInObject = false; }

    // The command only shows what is there.
    void SetShowing() { isShowing = true; }
    // More objects, which belong to no result.
    void CountOthers(const ObjectCounts& objects) { all += objects; }
    // Of the whole document; 0: there is none.
    void SetChangeNumber(std::int64_t number) { changeNumber = number; }
    void AddToSummary(const char* key, Json value) { moreSummary[key] = std::move(value); }

    // Prints the document. `code` is how the command would end without --check; the result is how it ends.
    ExitCode Finish(ExitCode code);

    // The parts of Finish, for a command with other results. Nobody listens any more.
    Json Results() const { return results; }
    Json EndDocument();
    ExitCode Conclude(ExitCode code) const;

  private:
    void Hear(const std::string& subject, const std::string& text, DWORD code) override;
    // Whether so many more parts may be kept, with texts of so many bytes. If not, one more is left out.
    bool Keep(std::size_t parts, std::size_t bytes);
    Json Summary() const;

    Command& command;
    ConsoleMessages& messages;
    JsonFlag json;
    // None in a command that does nothing else.
    std::optional<Flag> dryRun;
    std::optional<Flag> check;

    bool isInObject = false;
    bool isChanged = false;
    bool isFailed = false;
    bool isTree = false;
    ObjectCounts tree;  // of the object
    Json object;        // its result so far

    Json results = Json::array();
    Json otherMessages = Json::array();  // about none of the objects
    Json moreSummary = Json::object();
    ObjectCounts all;
    bool isShowing = false;
    std::int64_t changeNumber = 0;
    std::size_t kept = 0;
    std::size_t keptBytes = 0;
    std::size_t leftOut = 0;
};

}  // namespace permora
