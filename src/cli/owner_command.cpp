#include "cli/owner_command.h"

#include "cli/listing.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "security/object_security.h"
#include "security/owner_candidates.h"

namespace permora {
namespace {

bool ShowOwner(const Target& target, const HeldObject& object, ConsoleMessages& messages) {
    AccountRecord owner;
    const DWORD error = ReadObjectOwner(object, owner);
    if (error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return false;
    }
    const std::string name = AccountDisplayName(owner);
    Print(PrintableText(target.argument) + ": " + (name.empty() ? "none" : PrintableText(name)) + '\n');
    return true;
}

// A failure has been told.
bool DoTarget(const Target& target, const HeldObject& object, PSID newOwner, ConsoleMessages& messages) {
    const DWORD error = newOwner != nullptr ? object.WriteOwner(newOwner) : ERROR_SUCCESS;
    if (error == ERROR_SUCCESS) return ShowOwner(target, object, messages);
    messages.SaySystemError(error);
    return false;
}

// Everything below the folders among the targets. Each is found again: the trees before it may have taken
// long. False when one was not; the progress tells all other failures.
bool SetTrees(PSID newOwner, LinkedFiles linked, const std::vector<const Target*>& folders,
              TreeProgress& progress, TreeCounts& counts, ConsoleMessages& messages) {
    bool allFound = true;
    for (const Target* target : folders) {
        if (IsInterrupted()) break;
        HeldObject folder;
        messages.SetSubject(target->argument);
        if (!FindTarget(*target, folder, messages)) {
            allFound = false;
            continue;
        }
        progress.SetTarget(*target);
        const DWORD error = folder.SetOwnersBelow(newOwner, linked, progress, counts);
        if (error == ERROR_SUCCESS || error == ERROR_OPERATION_ABORTED) continue;
        ++counts.passedOver;
        progress.PassOver("", error);
    }
    return allFound;
}

}  // namespace

bool RunOwner(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
              ConsoleMessages& messages) {
    PSID newOwner = account.RawSid();
    if (newOwner != nullptr) {
        // Where the token holds nothing that helps, each object tells.
        if (const UniqueHandle token = OpenOwnToken()) EnableTakeOwnership(token.get());
    }
    bool allDone = true;
    std::vector<const Target*> folders;
    for (const Target& target : targets) {
        HeldObject object;
        messages.SetSubject(target.argument);
        const bool isFound = FindTarget(target, object, messages);
        if (isFound && object.IsFolder()) folders.push_back(&target);
        allDone = isFound && DoTarget(target, object, newOwner, messages) && allDone;
    }
    if (!arguments.tree) return allDone;

    WatchForInterrupts();
    TreeCounts counts;
    {
        TreeProgress progress(arguments, messages);
        allDone = SetTrees(newOwner, arguments.linked ? LinkedFiles::kChange : LinkedFiles::kPassOver,
                           folders, progress, counts, messages) &&
                  allDone;
    }
    PrintCounts(counts, false);
    if (IsInterrupted()) SayInterrupted(messages);
    return allDone && !IsInterrupted() && counts.passedOver == 0;
}

}  // namespace permora
