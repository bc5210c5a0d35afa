#include "cli/reset_command.h"

#include <algorithm>

#include "cli/consent.h"
#include "cli/listing.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "security/empty_list.h"

namespace permora {
namespace {

bool HandsAnythingDown(const AccessEntryList& entries) {
    return std::any_of(entries.Entries().begin(), entries.Entries().end(), [](const AccessEntry& entry) {
        return (entry.aceFlags & (OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE)) != 0;
    });
}

// Whether what is below the target may be reset; says why not. It is found again: the user may have thought
// for long about the question.
bool MayReset(const Arguments& arguments, const Target& target, HeldObject& folder,
              ConsoleMessages& messages) {
    ObjectSecurity object;
    if (!FindTarget(target, folder, messages)) return false;
    if (!folder.IsFolder()) {
        messages.Say("not reset: it is no folder, so nothing is below it");
        return false;
    }
    if (!arguments.dryRun && folder.TakeTurn() != ERROR_SUCCESS) {
        messages.Say("not reset: another program of yours is still changing it");
        return false;
    }
    if (!ReadList(folder, object, messages)) return false;
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
    UniqueLocal<ACL> list;
    if (const Outcome outcome = MakeEmptyList(list); !outcome.IsDone()) {
        messages.Say(outcome);
        return false;
    }
    const TreeListMode mode = arguments.dryRun ? TreeListMode::kCountOnly : TreeListMode::kWrite;
    TreeCounts counts;
    bool allDone = true;
    {
        TreeProgress observer(arguments, messages);
        for (const Target& target : targets) {
            if (IsInterrupted()) break;
            HeldObject folder;
            messages.SetSubject(target.argument);
            if (!MayReset(arguments, target, folder, messages)) {
                allDone = false;
                continue;
            }
            observer.SetTarget(target);
            const DWORD error = folder.SetListsBelow(list.get(), mode, observer, counts);
            if (error != ERROR_SUCCESS && error != ERROR_OPERATION_ABORTED) {
                ++counts.passedOver;
                observer.PassOver("", error);
            }
        }
    }
    PrintCounts(counts, arguments.dryRun);
    if (IsInterrupted()) SayInterrupted(messages);
    return allDone && !IsInterrupted() && counts.passedOver == 0;
}

}  // namespace permora
