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
#include "platform/security_change.h"
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
    std::string FindAccount(const std::string& text, nt::Sid& sid) override {
        AccountRecord account;
        std::string problem = FindTypedAccount(text, account);
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
    bool AreDifferentObjects();
    void WorkOn(const PolicyTree& tree);
    bool IsAlreadySo(const Target& target, PolicyEdit& edit);

    std::string file;
    ChangeOutput output;
    LinkedFlag linked{*this};
    QuietFlag quiet{*this};
    std::optional<Recording> recording;  // none: it checks

    Policy policy;
    std::vector<Target> targets;    // of the rules, in their order
    std::vector<std::string> tops;  // as PlanTrees takes them
    std::optional<TreeEditRun> run;
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
        HeldObject object;
        ChangedTop top;
        std::string path;
        if (FindItem(target.object, object).IsDone())
            path = object.FindTop(top) == ERROR_SUCCESS ? top.path : target.folder + target.name;
        targets.push_back(std::move(target));
        tops.push_back(std::move(path));
    }
    return AreDifferentObjects();
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
                                 linked ? LinkedFiles::kChange : LinkedFiles::kPassOver},
                recording ? recording->Recorder() : Unrecorded(), output);
    bool areAllThere = true;
    for (std::size_t i = 0; i < tops.size(); ++i) {
        if (!tops[i].empty()) continue;
        HeldObject object;
        messages.SetSubject(targets[i].argument);
        const DWORD error = targets[i].object.Error();
        const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        output.BeginObject(targets[i].argument);
        const bool isFine =
            (policy.rules[i].isOptional && isMissing) || FindTarget(targets[i], object, messages);
        output.EndObject(isFine);
        areAllThere = areAllThere && isFine;
    }
    // What a tree should have had and the walk has not come to, on another volume, has a turn of its own.
    for (std::vector<PolicyTree> trees = PlanTrees(policy, tops); !trees.empty();
         trees = PlanTrees(policy, tops)) {
        for (const PolicyTree& tree : trees) {
            if (IsInterrupted() || (recording && recording->IsStopped())) break;
            WorkOn(tree);
        }
        if (IsInterrupted() || (recording && recording->IsStopped())) break;
    }
    return ExitCodeOf(run->End() && areAllThere);
}

void PolicyTaskCommand::WorkOn(const PolicyTree& tree) {
    const Target& target = targets[tree.first];
    const std::string top = tops[tree.first];
    PolicyEdit edit(tree.parts);
    output.BeginObject(target.argument);
    messages.SetSubject(target.argument);
    if (!tree.isWalked && IsAlreadySo(target, edit))
        run->Pass();
    else
        run->Edit(target, edit);
    output.EndObject(true);
    for (std::size_t i = 0; i < tree.rules.size(); ++i)
        if (tops[tree.rules[i]] == top || edit.HasMet(i)) tops[tree.rules[i]].clear();
}

// Whether the object need not be written, so that nothing below it changes either.
bool PolicyTaskCommand::IsAlreadySo(const Target& target, PolicyEdit& edit) {
    HeldObject object;
    nt::SecurityDescriptor present;
    if (!FindItem(target.object, object).IsDone() ||
        ReadDescriptor(object, DACL_SECURITY_INFORMATION, present) != ERROR_SUCCESS)
        return false;
    const nt::ObjectKind kind = object.IsFolder() ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    const EditedSecurity edited = edit.Edit({present, kind, EditPlace::kTop, nullptr});
    return edited.fault == EditFault::kNone && edited.wanted == present;
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
