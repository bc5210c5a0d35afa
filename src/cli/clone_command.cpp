// clone: gives objects what another one has.
#include <optional>
#include <string>
#include <vector>

#include "changes/copy_edit.h"
#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/consent.h"
#include "cli/object_command.h"
#include "cli/tree_edit_run.h"
#include "platform/api/errors.h"
#include "platform/security_change.h"

namespace permora {
namespace {

class CloneCommand : public ObjectCommand {
  public:
    explicit CloneCommand(const CommandParent& parent)
        : ObjectCommand(parent, "clone",
                        "Give objects what another one has: its own entries, and whether it inherits.\n"
                        "What is below a folder gets what it inherits then. Links and what is mounted\n"
                        "below are not entered") {
        from.Describe({.kind = ValueKind::kPath});
        yes.Needs(tree);
        linked.Needs(owner);
    }

    std::string Interpret() override;

  private:
    std::optional<PlannedChange> Plan() override;
    ChangeOutput* Output() override { return &output; }
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override { return run->End(); }
    bool ReadSource();

    TextOption from{*this, "--from", "SOURCE", "The object whose entries are given to the others",
                    Presence::kRequired};
    Flag tree{*this, "--tree",
              "Give it also to everything below the folders, which loses what it has of its\n"
              "own. An object whose folder hands all of it down inherits it instead"};
    Flag owner{*this, "--owner", "Give them the source's owner, too"};
    LinkedFlag linked{*this};
    ChangeOutput output{*this, messages, "Show what would change, before and after, and write nothing"};
    YesFlag yes{*this};
    QuietFlag quiet{*this};
    Recording recording{*this};

    nt::SecurityDescriptor source;
    std::optional<CopyEdit> edit;
    std::optional<TreeEditRun> run;
};

std::string CloneCommand::Interpret() {
    std::string problem = ObjectCommand::Interpret();
    if (problem.empty() && from.Text() && from.Text()->empty()) problem = "--from: the path is empty";
    return problem;
}

std::optional<ObjectCommand::PlannedChange> CloneCommand::Plan() {
    if (output.IsDryRun()) return std::nullopt;
    return PlannedChange{ChangeKind::kClone, recording};
}

bool CloneCommand::ReadSource() {
    Target target;
    HeldObject object;
    bool isSupported = false;
    if (!MakeNamedTarget(from.Text().value_or(""), target, messages) ||
        !FindTarget(target, object, messages) || !messages.Check({object.AskAccessControl(isSupported)}))
        return false;
    if (!isSupported) return messages.Check({ERROR_NOT_SUPPORTED, Step::kUseAccessControl});
    return messages.Check({ReadDescriptor(object, DACL_SECURITY_INFORMATION, source)});
}

ExitCode CloneCommand::Begin(const std::vector<Target>& targets) {
    if (!ReadSource()) return ExitCode::kUsage;
    const ConsentTexts texts = {
        "clone --tree replaces every entry that is set below the folders",
        "These and everything below them lose the entries set for them:", "nothing was changed"};
    if (tree && !output.IsDryRun() && !yes && !AskForConsent(texts, targets, messages))
        return ExitCode::kUsage;
    edit.emplace(source, tree ? CopyEdit::Reach::kTree : CopyEdit::Reach::kTop,
                 owner ? CopyEdit::Owner::kCopy : CopyEdit::Owner::kKeep);
    run.emplace(TreeEditRun::How{quiet ? Progress::kQuiet : Progress::kShown,
                                 linked ? LinkedFiles::kChange : LinkedFiles::kPassOver},
                recording.Recorder(), output);
    return ExitCode::kDone;
}

bool CloneCommand::Do(const Target& target) {
    run->Edit(target, *edit);
    return true;
}

}  // namespace

std::unique_ptr<Command> MakeClone(const CommandParent& parent) {
    return std::make_unique<CloneCommand>(parent);
}

}  // namespace permora
