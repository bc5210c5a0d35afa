// replace: accounts in whole trees that others take the place of.
#include <optional>
#include <string>
#include <vector>

#include "changes/account_edits.h"
#include "cli/account_option.h"
#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/map_options.h"
#include "cli/object_command.h"
#include "cli/tree_edit_run.h"

namespace permora {
namespace {

class ReplaceCommand : public ObjectCommand {
  public:
    explicit ReplaceCommand(const CommandParent& parent)
        : ObjectCommand(parent, "replace",
                        "Put another account in the place of one, on the objects and everything below\n"
                        "them: in entries of every type and their conditions, owners and groups. What is\n"
                        "inherited from above the named objects stays. Links and what is mounted below\n"
                        "are not entered") {
        copy.Excludes(keepOwners);
        linked.Excludes(keepOwners);
    }

    std::string Interpret() override;

  private:
    std::optional<PlannedChange> Plan() override;
    ChangeOutput* Output() override { return &output; }
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;
    ReplaceEdit::Manner Manner() const;

    AccountOption old{*this, "--account", R"(The account that goes: a name, DOMAIN\name or a SID)",
                      Presence::kOptional};
    AccountOption other{*this, "--by", "The account that takes its place", Presence::kOptional};
    MapOptions map{*this};
    Flag copy{*this, "--copy",
              "Give the other account what the first one has in the access lists, and leave\n"
              "that one what it has"};
    Flag keepOwners{*this, "--keep-owners", "Leave owners and groups as they are"};
    LinkedFlag linked{*this};
    ChangeOutput output{*this, messages, "Show what would change, before and after, and write nothing"};
    QuietFlag quiet{*this};
    Recording recording{*this};

    std::optional<ReplaceEdit> edit;
    std::optional<TreeEditRun> run;
};

std::string ReplaceCommand::Interpret() {
    std::string problem = ObjectCommand::Interpret();
    if (problem.empty()) problem = map.Interpret();
    if (!problem.empty()) return problem;
    if (old.IsGiven() != other.IsGiven())
        return old.IsGiven() ? "--by is required with --account" : "--account is required with --by";
    if (old.IsGiven() && !map.Add(*old.Account().sid, *other.Account().sid,
                                  {old.Text().value_or(""), other.Text().value_or(""), 0}))
        return "--account: " + old.Text().value_or("") + " is to become two different accounts";
    return map.Exchange().IsEmpty() ? "--account and --by, --map or --map-file is required" : "";
}

std::optional<ObjectCommand::PlannedChange> ReplaceCommand::Plan() {
    if (output.IsDryRun()) return std::nullopt;
    return PlannedChange{ChangeKind::kReplace, recording};
}

ReplaceEdit::Manner ReplaceCommand::Manner() const {
    if (copy) return ReplaceEdit::Manner::kCopy;
    return keepOwners ? ReplaceEdit::Manner::kReplaceInLists : ReplaceEdit::Manner::kReplace;
}

ExitCode ReplaceCommand::Begin(const std::vector<Target>& /*targets*/) {
    map.TellChains(messages);
    edit.emplace(map.Exchange(), Manner());
    run.emplace(TreeEditRun::How{quiet ? Progress::kQuiet : Progress::kShown,
                                 linked ? LinkedFiles::kChange : LinkedFiles::kPassOver},
                recording.Recorder(), output);
    return ExitCode::kDone;
}

bool ReplaceCommand::Do(const Target& target) {
    run->Edit(target, *edit);
    return true;
}

bool ReplaceCommand::End() {
    const bool areAllDone = run->End();
    map.TellUnused("what was looked through", messages);
    return areAllDone;
}

}  // namespace

std::unique_ptr<Command> MakeReplace(const CommandParent& parent) {
    return std::make_unique<ReplaceCommand>(parent);
}

}  // namespace permora
