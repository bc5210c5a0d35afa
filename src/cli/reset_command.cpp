// reset: everything below a folder gets what it inherits and nothing else.
#include <algorithm>
#include <optional>
#include <string>

#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/consent.h"
#include "cli/interrupts.h"
#include "cli/listing.h"
#include "cli/nested_targets.h"
#include "cli/object_command.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "security/change_preview.h"
#include "security/dacl_builder.h"

namespace permora {
namespace {

bool HandsAnythingDown(const AccessEntryList& entries) {
    return std::any_of(entries.Entries().begin(), entries.Entries().end(), [](const AccessEntry& entry) {
        return (entry.aceFlags & (OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE)) != 0;
    });
}

class ResetCommand : public ObjectCommand {
  public:
    explicit ResetCommand(const CommandParent& parent)
        : ObjectCommand(parent, "reset",
                        "Give everything below a folder what it inherits and nothing else: entries\n"
                        "of its own go, and protection from inheritance ends. The folder itself\n"
                        "keeps its list. Links and what is mounted below are not entered") {}

  private:
    std::optional<PlannedChange> Plan() override;
    ChangeOutput* Output() override { return &output; }
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;
    bool MayReset(const HeldObject& folder);

    ChangeOutput output{*this, messages, "Count what would change and write nothing"};
    YesFlag yes{*this};
    Flag emptyLists{*this, "--empty-lists",
                    "Go on even below a folder that hands nothing down;\n"
                    "afterwards nobody has access to what is below it"};
    QuietFlag quiet{*this};
    Flag verbose{*this, "--verbose", "Name each object that is passed over, with the reason"};
    Recording recording{*this};

    UniqueLocal<ACL> list;
    std::optional<TreeProgress> progress;
    TreeCounts counts;
    NestedTargets nested;  // of a dry run
};

std::optional<ObjectCommand::PlannedChange> ResetCommand::Plan() {
    if (output.IsDryRun()) return std::nullopt;
    return PlannedChange{ChangeKind::kReset, recording};
}

ExitCode ResetCommand::Begin(const std::vector<Target>& targets) {
    const ConsentTexts texts = {
        "reset removes every entry that is set below the folders",
        "Everything below these folders loses the entries set for it and keeps what it inherits:",
        "nothing was changed"};
    if (!output.IsDryRun() && !yes && !AskForConsent(texts, targets, messages)) return ExitCode::kUsage;
    WatchForInterrupts();
    progress.emplace(quiet ? Progress::kQuiet : Progress::kShown,
                     verbose ? PassedOver::kNamed : PassedOver::kCounted, messages);
    return ExitCodeOf(messages.Check(MakeEmptyList(list)));
}

// Whether what is below the folder may be reset; the reason was printed when not.
bool ResetCommand::MayReset(const HeldObject& folder) {
    ObjectSecurity object;
    if (!ReadList(folder, object, messages)) return false;
    if (emptyLists || HandsAnythingDown(object.entries)) return true;
    messages.Say(
        "not reset: it hands no entries down, so afterwards nobody would have access to what is below it "
        "(--empty-lists does it all the same)");
    return false;
}

bool ResetCommand::Do(const Target& target) {
    HeldObject folder;
    // The folder is found again, since the user may have taken long to answer.
    if (!FindTarget(target, folder, messages)) return false;
    if (!folder.IsFolder()) {
        messages.Say("not reset: it is no folder, so nothing is below it");
        return false;
    }
    if (!output.IsDryRun() && folder.TakeTurn() != ERROR_SUCCESS) {
        messages.Say("not reset: another program of yours is still changing it");
        return false;
    }
    if (!MayReset(folder)) return false;
    if (output.IsDryRun()) nested.Add(target, folder, messages);
    progress->SetTarget(target);
    const TreeListMode mode = output.IsDryRun() ? TreeListMode::kCountOnly : TreeListMode::kWrite;
    const ObjectCounts before = CountsOf(counts);
    const DWORD error = folder.SetListsBelow(list.get(), mode, recording.Recorder(), *progress, counts);
    progress->EndTarget(OutcomeOfChange(error, recording.Recorder()), counts);
    output.Count(CountsOf(counts) - before);
    return error != ERROR_OPERATION_ABORTED;
}

bool ResetCommand::End() {
    progress.reset();
    const bool isWhole = EndTrees(counts, output.Mode(), messages);
    if (!output.IsDryRun()) return isWhole;
    messages.SetSubject("");
    for (const std::string& line : LossLines(counts))
        messages.Tell(line);
    return isWhole;
}

}  // namespace

std::unique_ptr<Command> MakeReset(const CommandParent& parent) {
    return std::make_unique<ResetCommand>(parent);
}

}  // namespace permora
