#include "cli/owner_command.h"

#include "cli/listing.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "security/object_owner.h"
#include "security/owner_candidates.h"

namespace permora {
namespace {

bool ShowOwner(const Target& target, ConsoleMessages& messages) {
    AccountRecord owner;
    const DWORD error = ReadObjectOwner(target.name.c_str(), owner);
    if (error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return false;
    }
    const std::string name = AccountDisplayName(owner);
    Print(PrintableText(target.argument) + ": " + (name.empty() ? "none" : PrintableText(name)) + '\n');
    return true;
}

// A failure has been told.
bool DoTarget(const Target& target, PSID newOwner, ConsoleMessages& messages) {
    DWORD error = EnterFolder(target);
    if (error == ERROR_SUCCESS && newOwner != nullptr)
        error = WriteObjectOwner(target.name.c_str(), newOwner);
    if (error == ERROR_SUCCESS) return ShowOwner(target, messages);
    messages.SaySystemError(error);
    return false;
}

// The answer for a file or a link, which is no failure of the walk. What does not exist was told before.
bool HasNothingBelow(DWORD error) {
    return error == ERROR_DIRECTORY || error == ERROR_CANT_RESOLVE_FILENAME ||
           error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

// Everything below the folders among the targets. The progress tells each failure.
void SetTrees(PSID newOwner, const std::vector<Target>& targets, TreeProgress& progress, TreeCounts& counts) {
    for (const Target& target : targets) {
        if (IsInterrupted()) return;
        progress.SetTarget(target);
        DWORD error = EnterFolder(target);
        if (error == ERROR_SUCCESS) error = SetOwnersBelow(target.name.c_str(), newOwner, progress, counts);
        if (error == ERROR_SUCCESS || error == ERROR_OPERATION_ABORTED || HasNothingBelow(error)) continue;
        ++counts.passedOver;
        progress.PassOver(target.name, error);
    }
}

}  // namespace

bool RunOwner(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
              ConsoleMessages& messages) {
    PSID newOwner = account.sid.get();
    if (newOwner != nullptr) {
        // Where the token holds nothing that helps, each object tells.
        if (const UniqueHandle token = OpenOwnToken()) EnableTakeOwnership(token.get());
    }
    bool allDone = true;
    for (const Target& target : targets) {
        messages.SetSubject(target.argument);
        allDone = DoTarget(target, newOwner, messages) && allDone;
    }
    if (!arguments.tree) return allDone;

    WatchForInterrupts();
    TreeCounts counts;
    {
        TreeProgress progress(arguments, messages);
        SetTrees(newOwner, targets, progress, counts);
    }
    PrintCounts(counts, false);
    if (IsInterrupted()) SayInterrupted(messages);
    return allDone && !IsInterrupted() && counts.passedOver == 0;
}

}  // namespace permora
