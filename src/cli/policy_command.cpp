// policy: compares objects with what a policy file says of them, or makes them so.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/argument_shield.h"
#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/interrupts.h"
#include "cli/recording.h"
#include "cli/tree_edit_run.h"
#include "cli/vocabulary.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/private_place.h"
#include "platform/sequential_file.h"
#include "policy/policy_plan.h"
#include "policy/policy_reader.h"
#include "security/access_rights.h"
#include "security/account_lookup.h"

namespace permora {
namespace {

// The words of the options of grant.
class TypedWords : public PolicyWords {
  public:
    std::string FindAccount(const std::string& text, const std::string& path, nt::Sid& sid) override {
        AccountRecord account;
        std::string problem = FindTypedAccount(text, account, ServerOfArguments({path}));
        if (problem.empty()) sid = *account.sid;
        return problem;
    }
    std::string FindRights(const std::string& text, DWORD& mask) override {
        std::string problem;
        const std::optional<DWORD> rights = ParseRights(text, problem);
        mask = rights.value_or(0);
        return problem;
    }
    std::string FindScope(const std::string& text, BYTE& flags) override {
        const std::optional<int> scope = ParseScope(text);
        if (!scope) return "no scope is called \"" + text + '"';
        flags = ScopeFlagsFromIndex(*scope);
        return {};
    }
};

DWORD ReadPolicyText(const std::string& path, std::string& text) {
    SequentialFile file;
    DWORD error = SequentialFile::Open(path, file);
    std::vector<char> block(kMostPolicyBytes + 1);
    while (error == ERROR_SUCCESS && text.size() <= kMostPolicyBytes) {
        std::size_t count = 0;
        error = file.Read(block, count);
        if (count == 0) break;
        text.append(block.data(), count);
    }
    return error;
}

// Whether the object that was found has this very path; a volume may have a letter of its own.
bool IsPathOf(const Target& target, const ChangedTop& top) {
    const std::string path = target.folder + target.name;
    return path == top.path || HostPathFromPath(path) == HostPathFromPath(top.path);
}

enum class PolicyTask { kCheck, kApply };

class PolicyTaskCommand : public Command {
  public:
    PolicyTaskCommand(const CommandParent& parent, PolicyTask work);

    std::string Interpret() override;
    ExitCode Run() override;

  private:
    bool ReadFile();
    bool SayFault(const PolicyFault& fault);
    ExitCode Work();
    ExitCode WorkOnTrees();
    bool FindObjects();
    std::string TopOf(const Target& target);
    bool AreDifferentObjects();
    bool MayBeMissing(std::size_t rule) const;
    void FailWithoutTop(std::size_t rule);
    void WorkOn(const PolicyTree& tree);
    bool IsStopped() { return IsInterrupted() || (recording && recording->IsStopped()); }

    std::string file;
    ChangeOutput output;
    LinkedFlag linked{*this};
    QuietFlag quiet{*this};
    std::optional<Recording> recording;  // none: it checks

    Policy policy;
    std::vector<Target> targets;    // of the rules, in their order
    std::vector<std::string> tops;  // as PlanTrees takes them
    std::optional<TreeEditRun> run;
    bool areAllFollowed = true;  // each rule had its turn
};

PolicyTaskCommand::PolicyTaskCommand(const CommandParent& parent, PolicyTask work)
    : Command(parent, work == PolicyTask::kCheck ? "check" : "apply",
              work == PolicyTask::kCheck
                  ? "Show what differs from a policy, and write nothing. Ends with 0 when nothing does,\n"
                    "with 1 when something does, and with 3 when that is not known of everything"
                  : "Make everything as a policy says, as one change of the history. What is already\n"
                    "so is not written"),
      output(*this, messages,
             work == PolicyTask::kCheck ? nullptr
                                        : "Show what would change, before and after, and write nothing") {
    Parser().add_option("FILE", file, "The policy")->required()->type_name("");
    if (work == PolicyTask::kApply) recording.emplace(*this);
}

std::string PolicyTaskCommand::Interpret() {
    file = Unshielded(file);
    return file.empty() ? "the name of the file is empty" : Command::Interpret();
}

bool PolicyTaskCommand::SayFault(const PolicyFault& fault) {
    if (fault.place.line != 0)
        messages.SetSubject(file + ", line " + std::to_string(fault.place.line) + ", column " +
                            std::to_string(fault.place.column));
    messages.Say(fault.text);
    return false;
}

bool PolicyTaskCommand::ReadFile() {
    messages.SetSubject(file);
    if (IsAmbiguousArgument(file.c_str())) {
        messages.Say("a file here is called so: write ./ before its name, or the path as /folder/file");
        return false;
    }
    const std::string path = PathFromArgument(file.c_str());
    if (MayOthersSteerBy(path)) {
        messages.Say("refused: others than root can change it, or a folder or link on the way to it");
        return false;
    }
    std::string text;
    if (!messages.Check({ReadPolicyText(path, text)})) return false;
    TypedWords words;
    PolicyFault fault;
    std::optional<Policy> read = ReadPolicy(text, words, fault);
    if (!read) return SayFault(fault);
    policy = std::move(*read);
    return true;
}

// Finds the objects at the paths of all rules. False when a path cannot be one; a missing object is named
// when its turn comes.
bool PolicyTaskCommand::FindObjects() {
    for (const PolicyRule& rule : policy.rules) {
        Target target;
        if (!MakeNamedTarget(rule.path, target, messages)) return false;
        tops.push_back(TopOf(target));
        targets.push_back(std::move(target));
    }
    return AreDifferentObjects();
}

// Empty where the rule is not followed: nothing is there, or a link on the way, which may be others' to make,
// leads there.
std::string PolicyTaskCommand::TopOf(const Target& target) {
    HeldObject object;
    ChangedTop top;
    if (!FindItem(target.object, object).IsDone() || object.FindTop(top) != ERROR_SUCCESS) return {};
    const bool isFolderWhereNeeded = object.IsFolder() || !target.endsWithSeparator;
    return isFolderWhereNeeded && IsPathOf(target, top) ? top.path : std::string();
}

// Two spellings of one path must not be two rules, of which one is never followed.
bool PolicyTaskCommand::AreDifferentObjects() {
    for (std::size_t i = 0; i < tops.size(); ++i)
        for (std::size_t j = 0; !tops[i].empty() && j < i; ++j) {
            const PolicyRule& one = policy.rules[j];
            const PolicyRule& other = policy.rules[i];
            if (tops[i] != tops[j] || one.below != other.below || one.kinds != other.kinds) continue;
            messages.SetSubject(file);
            return SayFault({other.place, "the rule in line " + std::to_string(one.place.line) +
                                              " is about the same objects"});
        }
    return true;
}

ExitCode PolicyTaskCommand::Run() {
    output.Start();
    return output.Finish(Work());
}

ExitCode PolicyTaskCommand::Work() {
    if (!ReadFile() || !FindObjects()) return ExitCode::kUsage;
    if (output.IsDryRun()) return WorkOnTrees();
    if (!recording->Begin(ChangeKind::kPolicy, messages)) return ExitCode::kSomeFailed;
    const ExitCode code = WorkOnTrees();
    output.SetChangeNumber(recording->Number());
    recording->End(messages);
    return code;
}

ExitCode PolicyTaskCommand::WorkOnTrees() {
    run.emplace(TreeEditRun::How{quiet ? Progress::kQuiet : Progress::kShown,
                                 linked ? LinkedFiles::kChange : LinkedFiles::kPassOver,
                                 linked ? LinkedFiles::kChange : LinkedFiles::kPassOver},
                recording ? recording->Recorder() : Unrecorded(), output);
    for (std::size_t i = 0; i < tops.size(); ++i)
        if (tops[i].empty() && !MayBeMissing(i)) FailWithoutTop(i);
    // What is on another volume than its tree has a turn of its own.
    for (std::vector<PolicyTree> trees = PlanTrees(policy, tops); !trees.empty() && !IsStopped();
         trees = PlanTrees(policy, tops))
        for (const PolicyTree& tree : trees)
            if (!IsStopped()) WorkOn(tree);
    return ExitCodeOf(run->End() && areAllFollowed);
}

// Whether it is optional, and nothing is there.
bool PolicyTaskCommand::MayBeMissing(std::size_t rule) const {
    HeldObject object;
    const DWORD error = FindItem(targets[rule].object, object).code;
    return policy.rules[rule].isOptional && (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND);
}

// Says why the rule is not followed.
void PolicyTaskCommand::FailWithoutTop(std::size_t rule) {
    const Target& target = targets[rule];
    HeldObject object;
    ChangedTop top;
    areAllFollowed = false;
    output.BeginObject(target.argument);
    messages.SetSubject(target.argument);
    if (FindTarget(target, object, messages) && messages.Check({object.FindTop(top)})) {
        const std::string hostPath = HostPathFromPath(top.path);
        const std::string isPath = hostPath.empty() ? top.path : hostPath;
        messages.Say(IsPathOf(target, top)
                         ? "not looked at: it was not there before, or is not what it was"
                         : "not looked at: a link leads there, or it is spelled otherwise; write " + isPath);
    }
    output.EndObject(false);
}

void PolicyTaskCommand::WorkOn(const PolicyTree& tree) {
    const Target& target = targets[tree.first];
    const std::string top = tops[tree.first];
    PolicyEdit edit(tree.parts);
    output.BeginObject(target.argument);
    messages.SetSubject(target.argument);
    run->Edit(target, edit);
    output.EndObject(true);
    if (IsStopped()) return;
    for (std::size_t i = 0; i < tree.rules.size(); ++i) {
        const std::size_t rule = tree.rules[i];
        const bool isTop = tops[rule] == top;
        const PolicyEdit::Meeting meeting = edit.MeetingOf(i);
        if (!isTop && meeting == PolicyEdit::Meeting::kElsewhere) continue;
        tops[rule].clear();
        // It is not looked at alone, since a later rule of the tree may be about it.
        if (isTop || meeting == PolicyEdit::Meeting::kMet || MayBeMissing(rule)) continue;
        areAllFollowed = false;
        output.BeginObject(targets[rule].argument);
        messages.SetSubject(targets[rule].argument);
        messages.Say("not looked at: it was not come to from " + target.argument);
        output.EndObject(false);
    }
}

class PolicyCommand : public Command {
  public:
    explicit PolicyCommand(const CommandParent& parent)
        : Command(parent, "policy",
                  "Keep objects as a file says: which entries, protection and owner they are to have") {
        Parser().require_subcommand(1);
    }
    ExitCode Run() override { return ExitCode::kUsage; }

  private:
    PolicyTaskCommand check{AsParent(), PolicyTask::kCheck};
    PolicyTaskCommand apply{AsParent(), PolicyTask::kApply};
};

}  // namespace

std::unique_ptr<Command> MakePolicy(const CommandParent& parent) {
    return std::make_unique<PolicyCommand>(parent);
}

}  // namespace permora
