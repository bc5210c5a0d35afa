#include "cli/reset_command.h"

#include <algorithm>
#include <array>

#include "cli/consent.h"
#include "cli/listing.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "security/tree_apply.h"

namespace permora {
namespace {

bool HandsAnythingDown(const AccessEntryList& entries) {
    return std::any_of(entries.Entries().begin(), entries.Entries().end(), [](const AccessEntry& entry) {
        return (entry.aceFlags & (OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE)) != 0;
    });
}

// Whether what is below the target may be reset; says why not.
bool MayReset(const Arguments& arguments, const Target& target, ConsoleMessages& messages) {
    bool isFolder = false;
    DWORD error = EnterFolder(target);
    if (error == ERROR_SUCCESS) error = AskIsFolder(target, isFolder);
    if (error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return false;
    }
    if (!isFolder) {
        messages.Say("not reset: it is no folder, so nothing is below it");
        return false;
    }
    ObjectSecurity object;
    if (!ReadList(target, object, messages)) return false;
    if (arguments.emptyLists || HandsAnythingDown(object.entries)) return true;
    messages.Say(
        "not reset: it hands no entries down, so afterwards nobody would have access to what is below it "
        "(--empty-lists does it all the same)");
    return false;
}

}  // namespace

bool ConfirmReset(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages) {
    if (arguments.dryRun || arguments.yes || targets.empty()) return true;
    return AskForConsent(
        {"reset removes every entry that is set below the folders",
         "Everything below these folders loses the entries set for it and keeps what it inherits:",
         "nothing was changed"},
        targets, messages);
}

bool RunReset(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages) {
    WatchForInterrupts();
    const TreeListMode mode = arguments.dryRun ? TreeListMode::kCountOnly : TreeListMode::kWrite;
    TreeCounts counts;
    bool allDone = true;
    TreeApplyResult result = TreeApplyResult::kDone;
    {
        TreeProgress observer(arguments, messages);
        for (const Target& target : targets) {
            if (IsInterrupted() || result != TreeApplyResult::kDone) break;
            messages.SetSubject(target.argument);
            if (!MayReset(arguments, target, messages)) {
                allDone = false;
                continue;
            }
            observer.SetTarget(target);
            const std::array<const char*, 1> names = {target.name.c_str()};
            result = ApplyToTrees(nullptr, names, mode, observer, counts);
        }
    }
    PrintCounts(counts, arguments.dryRun);
    if (IsInterrupted()) SayInterrupted(messages);
    return allDone && !IsInterrupted() && result == TreeApplyResult::kDone && counts.passedOver == 0;
}

}  // namespace permora
