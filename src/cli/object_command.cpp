#include "cli/object_command.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "cli/argument_shield.h"
#include "cli/interrupts.h"
#include "platform/api/errors.h"

namespace permora {
namespace {

// False when a name is empty.
bool TakeNames(std::vector<std::string>& names) {
    bool areNames = true;
    for (std::string& name : names) {
        name = Unshielded(name);
        areNames = areNames && !name.empty();
    }
    return areNames;
}

}  // namespace

ObjectCommand::ObjectCommand(const CommandParent& parent, const char* name, const char* description,
                             Objects objects, const char* pathDescription)
    : Command(parent, name, description) {
    if (objects == Objects::kShares) {
        CLI::Option& names =
            *Parser()
                 .add_option("NAME", shares, "Names of shares; behind -- also those that begin with a dash")
                 ->required()
                 ->type_name("");
        DescribeValue(names, {.kind = ValueKind::kShare});
        return;
    }
    Parser().add_option("PATH", paths, pathDescription)->required()->type_name("");
}

ObjectCommand::ShareOption::ShareOption(ObjectCommand& command) {
    CLI::Option* path = command.Parser().get_option("PATH")->required(false);
    CLI::Option& names =
        *command.Parser()
             .add_option("--share", command.shares,
                         "Shares in the place of paths: the lists that the server keeps for them,\n"
                         "which apply to whoever comes over the network")
             ->type_name("NAME")
             ->excludes(path);
    DescribeValue(names, {.kind = ValueKind::kShare});
}

std::string ObjectCommand::Interpret() {
    if (!TakeNames(paths)) return "a path is empty";
    if (!TakeNames(shares)) return "the name of a share is empty";
    if (ObjectCount() == 0) return "PATH or --share is required";
    return Command::Interpret();
}

std::string ObjectCommand::Server() const {
    return ServerOfArguments(paths);
}

std::vector<Target> ObjectCommand::FindTargets() {
    auto start = std::make_shared<FolderHandle>();
    if (FolderHandle::Open(".", *start) != ERROR_SUCCESS) start.reset();
    std::vector<Target> targets;
    ChangeOutput* const output = OutputOfMissing();
    for (const std::string& path : paths) {
        if (output != nullptr) output->BeginObject(path);
        Target target;
        const bool isFound = MakeCertainTarget(path, start, target, messages);
        if (isFound) {
            Hold(target);
            targets.push_back(std::move(target));
        }
        if (output != nullptr) isFound ? output->LeaveObject() : output->EndObject(false);
    }
    return targets;
}

ExitCode ObjectCommand::Run() {
    ChangeOutput* const output = Output();
    if (output == nullptr) {
        Start();
        return Conclude(RunChange());
    }
    output->Start();
    return output->Finish(RunChange());
}

ExitCode ObjectCommand::RunChange() {
    const std::optional<PlannedChange> change = Plan();
    if (!change) return DoAll(nullptr);
    if (!change->recording.Begin(change->kind, messages)) return ExitCode::kSomeFailed;
    const ExitCode result = DoAll(&change->recording);
    if (ChangeOutput* const output = Output()) output->SetChangeNumber(change->recording.Number());
    change->recording.End(messages);
    return result;
}

// The work on an object, whose name is the subject of the messages.
bool ObjectCommand::DoOne(const std::string& name, const Recording* recording,
                          const std::function<bool()>& work) {
    messages.SetSubject(name);
    ChangeOutput* const output = Output();
    if (output == nullptr) return work();
    const std::uint64_t before = recording != nullptr ? recording->Count() : 0;
    output->BeginObject(name);
    const bool isDone = work();
    if (recording != nullptr && recording->Count() > before) output->SetChanged();
    output->EndObject(isDone);
    return isDone;
}

// `recording` may be null.
ExitCode ObjectCommand::DoAll(Recording* recording) {
    const auto mustStop = [recording] {
        return IsInterrupted() || (recording != nullptr && recording->IsStopped());
    };
    const std::vector<Target> targets = FindTargets();
    if (const ExitCode code = Begin(targets); code != ExitCode::kDone) return code;
    bool allDone = targets.size() == paths.size();
    for (const Target& target : targets) {
        if (mustStop()) break;
        allDone = DoOne(target.argument, recording, [&] { return Do(target); }) && allDone;
    }
    for (const std::string& share : shares) {
        if (mustStop()) break;
        allDone = DoOne(share, recording, [&] { return DoShare(share); }) && allDone;
    }
    return ExitCodeOf(End() && allDone && !mustStop());
}

}  // namespace permora
