// owner: shows and sets owners.
#include <optional>
#include <vector>

#include "cli/account_option.h"
#include "cli/change_foresight.h"
#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/interrupts.h"
#include "cli/nested_targets.h"
#include "cli/object_command.h"
#include "cli/terminal_text.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "security/object_security.h"
#include "security/owner_candidates.h"

namespace permora {
namespace {

class OwnerCommand : public ObjectCommand {
  public:
    explicit OwnerCommand(const CommandParent& parent)
        : ObjectCommand(parent, "owner", "Show or change who owns objects") {
        tree.Needs(newOwner);
        linked.Needs(tree);
        output.DryRunNeeds(newOwner);
    }

  private:
    std::optional<PlannedChange> Plan() override;
    ChangeOutput* Output() override { return &output; }
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;
    bool SetOwner(const HeldObject& object);
    bool SetTrees(TreeCounts& counts);

    AccountOption newOwner{*this, "--set", R"(The new owner: a name, DOMAIN\name or a SID like S-1-1-0)",
                           Presence::kOptional};
    Flag tree{*this, "--tree",
              "Make NAME the owner of everything below the folders too. Links and what\n"
              "is mounted below are not entered, and files with further names (hard\n"
              "links), which may be others' files, are passed over"};
    Flag linked{*this, "--linked",
                "With --tree, give also files with further names to NAME, under all of them"};
    ChangeOutput output{*this, messages, "Count what would change and write nothing"};
    Recording recording{*this};
    std::vector<Target> folders;
    std::optional<ChangeForesight> foresight;  // of a dry run
    NestedTargets nested;                      // of a dry run of trees
};

std::optional<ObjectCommand::PlannedChange> OwnerCommand::Plan() {
    if (!newOwner.IsGiven() || output.IsDryRun()) return std::nullopt;
    return PlannedChange{ChangeKind::kOwner, recording};
}

ExitCode OwnerCommand::Begin(const std::vector<Target>& /*targets*/) {
    if (!newOwner.IsGiven()) output.SetShowing();
    // Without the privilege, the failure is reported for each object.
    if (newOwner.IsGiven())
        if (const UniqueHandle token = OpenOwnToken()) EnableTakeOwnership(token.get());
    return ExitCode::kDone;
}

bool OwnerCommand::SetOwner(const HeldObject& object) {
    const DWORD error = object.WriteOwner(newOwner.Account().RawSid(), recording.Recorder());
    return messages.Check(OutcomeOfChange(error, recording.Recorder()));
}

bool OwnerCommand::Do(const Target& target) {
    HeldObject object;
    if (!FindTarget(target, object, messages)) return false;
    if (object.IsFolder()) folders.push_back(target);
    if (output.IsDryRun()) {
        if (tree) nested.Add(target, object, messages);
        if (!foresight) foresight.emplace(output);
        foresight->Add(target, object, {OWNER_SECURITY_INFORMATION, {.owner = newOwner.Account().RawSid()}});
        return true;
    }
    if (newOwner.IsGiven() && !SetOwner(object)) return false;
    AccountRecord owner;
    if (!messages.Check({ReadObjectOwner(object, owner)})) return false;
    const std::string name = AccountDisplayName(owner);
    output.AddMember("owner", name.empty() ? Json() : Json(name));
    output.AddMember("ownerSid", owner.sid ? Json(owner.GetSidText()) : Json());
    messages.PrintForPeople(PrintableText(target.argument) + ": " +
                            (name.empty() ? "none" : PrintableText(name)) + '\n');
    return true;
}

// Everything below the folders among the targets. Each folder is found again, since the trees before it may
// have taken long. False when one was not found.
bool OwnerCommand::SetTrees(TreeCounts& counts) {
    TreeProgress progress(Progress::kShown, PassedOver::kNamed, messages);
    bool allFound = true;
    for (const Target& target : folders) {
        if (IsInterrupted() || recording.IsStopped()) break;
        HeldObject folder;
        messages.SetSubject(target.argument);
        output.BeginBelow(target.argument);
        if (!FindTarget(target, folder, messages)) {
            allFound = false;
            output.EndObject(false);
            continue;
        }
        const ObjectCounts before = CountsOf(counts);
        progress.SetTarget(target);
        const DWORD error = folder.SetOwnersBelow(
            newOwner.Account().RawSid(), linked ? LinkedFiles::kChange : LinkedFiles::kPassOver,
            output.IsDryRun() ? TreeListMode::kCountOnly : TreeListMode::kWrite, recording.Recorder(),
            progress, counts);
        progress.EndTarget(OutcomeOfChange(error, recording.Recorder()), counts);
        output.Count(CountsOf(counts) - before);
        output.EndObject(error != ERROR_OPERATION_ABORTED);
    }
    return allFound;
}

bool OwnerCommand::End() {
    if (!tree) return !foresight || foresight->End();
    WatchForInterrupts();
    TreeCounts counts;
    const bool allFound = SetTrees(counts);
    if (foresight) {
        foresight->AddBelow(counts);
        return foresight->End() && allFound;
    }
    return EndTrees(counts, output.Mode(), messages) && allFound;
}

}  // namespace

std::unique_ptr<Command> MakeOwner(const CommandParent& parent) {
    return std::make_unique<OwnerCommand>(parent);
}

}  // namespace permora
