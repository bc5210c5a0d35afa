// The terminal program: shows and changes access lists and owners of files, folders and drive roots and the
// lists of shares, and deletes files for good.
#include <exception>
#include <memory>
#include <optional>
#include <vector>

#include "cli/accounts_command.h"
#include "cli/arguments.h"
#include "cli/assign_command.h"
#include "cli/change_command.h"
#include "cli/effective_command.h"
#include "cli/exit_codes.h"
#include "cli/messages.h"
#include "cli/owner_command.h"
#include "cli/reset_command.h"
#include "cli/setup_command.h"
#include "cli/shares_command.h"
#include "cli/show_command.h"
#include "cli/shred_command.h"
#include "cli/target.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/process_start.h"

namespace permora {
namespace {

// The targets of all arguments, found while the current directory is still the user's own. One that means
// nothing is named and left out.
std::vector<Target> FindTargets(const std::vector<std::string>& paths, Command command,
                                ConsoleMessages& messages) {
    auto start = std::make_shared<FolderHandle>();
    if (FolderHandle::OpenCurrent(*start) != ERROR_SUCCESS) start.reset();
    std::vector<Target> targets;
    for (const std::string& path : paths) {
        messages.SetSubject(path);
        Target target;
        if (IsAmbiguousArgument(path.c_str())) {
            messages.Say("a file here is called so: write ./ before its name, or the path as /folder/file");
        } else if (const DWORD error = MakeTarget(path, start, target); error == ERROR_SUCCESS) {
            // What is shredded is held by who does it: nobody may have it open then.
            if (command != Command::kShred) RememberTarget(target);
            targets.push_back(std::move(target));
        } else {
            messages.SaySystemError(error);
        }
    }
    return targets;
}

bool RunCommand(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
                ConsoleMessages& messages) {
    const bool isAboutShares = !arguments.shares.empty();
    if (arguments.command == Command::kShares) return RunShares(arguments, messages);
    if (isAboutShares && arguments.command == Command::kShow) return RunShowShares(arguments, messages);
    if (isAboutShares) return RunChangeShares(arguments, account, messages);
    if (arguments.command == Command::kShow) return RunShow(arguments, targets, messages);
    if (arguments.command == Command::kAccounts) return RunAccounts(arguments, messages);
    if (arguments.command == Command::kSetup) return RunSetup(arguments, targets, messages);
    if (arguments.command == Command::kReset) return RunReset(arguments, targets, messages);
    if (arguments.command == Command::kOwner) return RunOwner(arguments, account, targets, messages);
    if (arguments.command == Command::kEffective) return RunEffective(arguments, account, targets, messages);
    if (arguments.command == Command::kAssign) return RunAssign(arguments, account, targets, messages);
    return RunChange(arguments, account, targets, messages);
}

int Run(const Arguments& arguments) {
    ConsoleMessages messages;
    AccountRecord account;
    if (!arguments.account.empty()) {
        messages.SetSubject(arguments.account);
        const DWORD error = FindAccount(arguments.account, account);
        if (error != ERROR_SUCCESS) {
            messages.SaySystemError(error);
            return kExitUsage;
        }
    }
    const std::vector<Target> targets = FindTargets(arguments.paths, arguments.command, messages);
    bool allDone = targets.size() == arguments.paths.size();
    if (arguments.command == Command::kReset && !ConfirmReset(arguments, targets, messages))
        return kExitUsage;
    if (arguments.command == Command::kShred) {
        ShredRun shred(arguments, targets, messages);
        if (!shred.Confirm()) return kExitUsage;
        return shred.Run() && allDone ? kExitDone : kExitSomeFailed;
    }
    allDone = RunCommand(arguments, account, targets, messages) && allDone;
    return allDone ? kExitDone : kExitSomeFailed;
}

// `exitCode`, or that of a failure when not all of the answer has reached whoever asked.
int AfterOutput(int exitCode) {
    if (IsAllPrinted()) return exitCode;
    ConsoleMessages messages;
    messages.SetSubject("standard output");
    messages.Say("not everything could be written");
    return exitCode == kExitDone ? kExitSomeFailed : exitCode;
}

int Main(int argumentCount, const char* const* argumentTexts) {
    int exitCode = kExitDone;
    const std::optional<Arguments> arguments = ParseArguments(argumentCount, argumentTexts, exitCode);
    return AfterOutput(arguments ? Run(*arguments) : exitCode);
}

}  // namespace
}  // namespace permora

int main(int argumentCount, char** argumentTexts) {
    permora::PrepareProcess();
    permora::UseUtf8Terminal();
    try {
        return permora::Main(argumentCount, argumentTexts);
    } catch (const std::exception& error) {  // no memory
        permora::PrintError("permora-cli: broken off: " + permora::PrintableText(error.what()) + '\n');
        return permora::kExitSomeFailed;
    }
}
