#include "cli/assign_command.h"

#include <optional>
#include <span>
#include <utility>

#include "cli/list_change.h"
#include "cli/listing.h"
#include "cli/rights_left.h"
#include "cli/terminal_output.h"
#include "platform/api/errors.h"
#include "security/access_rights.h"
#include "wizard/account_rights.h"

namespace permora {
namespace {

// Whether the selected account has all `wanted` rights; false after a message. Some are missing only where
// full control as a whole is taken for there because a part of it comes from above.
bool HasRights(const AccountRights& rights, DWORD wanted, ConsoleMessages& messages) {
    std::string missing;
    for (std::size_t right = 1; right < AccountRights::kRights; ++right) {
        if ((kAccessRights[right].bits & wanted) == 0 || rights.IsChecked(right)) continue;
        missing += (missing.empty() ? "" : ", ") + std::string(kAccessRights[right].listName);
    }
    if (missing.empty()) return true;
    messages.Say(
        "not changed: full control adds nothing to rights that come from above, and the account "
        "would not have: " +
        missing + " (--rights 0xf01ff gives each right by itself)");
    return false;
}

struct NewList {
    std::vector<AccessEntry> entries;
    UniqueLocal<ACL> dacl;
};

// What objects are to get, by their kind.
struct NewLists {
    NewList forFolders;
    NewList forFiles;
};

// The new rights of the first object's accounts; nothing after a message. What the object would lose is asked
// here, so that nothing is touched when it may not be changed itself. `object` is what it had when all this
// began.
std::optional<AccountRights> MakeRights(const Arguments& arguments, const AccountRecord& account,
                                        const HeldObject& first, ObjectSecurity& object,
                                        ConsoleMessages& messages) {
    AccountRights rights;
    ReadParts list;
    if (!ReadForChange(first, object, messages)) return std::nullopt;
    if (const Outcome outcome = LoadAccountsFromItem(first, rights, list); !outcome.IsDone()) {
        messages.Say(outcome);
        return std::nullopt;
    }
    if (list.dacl == nullptr) {
        messages.Say("Object's access control list is null (All access is allowed)");
        return std::nullopt;
    }
    if (!MayReplace(LossesOf(object), arguments, messages)) return std::nullopt;
    const std::size_t index = rights.Add(account);
    rights.Select(index);
    rights.ApplyCombination(arguments.rights);
    rights.Select(index);  // the boxes show what was written, not what was ticked
    if (!HasRights(rights, arguments.rights, messages)) return std::nullopt;
    return rights;
}

bool MakeList(HMODULE library, const AccountRights& rights, ItemKind kind, NewList& list,
              ConsoleMessages& messages) {
    list.entries = rights.Entries(kind);
    list.dacl = BuildWholeDacl(library, list.entries, messages);
    return list.dacl != nullptr;
}

// Nothing after a message.
std::optional<NewLists> MakeLists(const Arguments& arguments, const AccountRecord& account,
                                  const HeldObject& first, ObjectSecurity& object, HMODULE library,
                                  ConsoleMessages& messages) {
    const std::optional<AccountRights> rights = MakeRights(arguments, account, first, object, messages);
    NewLists lists;
    if (!rights || !MakeList(library, *rights, ItemKind::kFolder, lists.forFolders, messages) ||
        !MakeList(library, *rights, ItemKind::kFile, lists.forFiles, messages))
        return std::nullopt;
    return lists;
}

// Makes the object what it would be, with the new list, which `dacl` then holds, and what it goes on to
// inherit; false after a message.
bool Preview(HMODULE library, std::vector<AccessEntry> entries, ObjectSecurity& object,
             UniqueLocal<ACL>& dacl, ConsoleMessages& messages) {
    if (object.inheritance == DaclInheritance::kFromParent) {
        for (const AccessEntry& entry : object.entries.Entries())
            if (entry.IsInherited()) entries.push_back(entry);
    }
    dacl = BuildWholeDacl(library, entries, messages);
    if (!dacl) return false;
    object.dacl = dacl.get();
    object.entries.LoadFromDacl(object.dacl);
    return true;
}

// Says what a written list leaves to the account, which may be more than was assigned: by its groups, by its
// other SIDs and from above. Fails after a message.
ChangeResult TellRightsLeft(const HeldObject& held, AccountRecord& account, ConsoleMessages& messages) {
    ObjectSecurity object;
    if (!ReadList(held, object, messages)) return ChangeResult::kFailed;
    Print(RightsLeftText(object.dacl, account));
    return ChangeResult::kDone;
}

// `object` is what `held` had when it was read.
ChangeResult GiveList(const Arguments& arguments, AccountRecord& account, const Target& target,
                      const HeldObject& held, ObjectSecurity& object, HMODULE library, const NewLists& lists,
                      ConsoleMessages& messages) {
    const NewList& list = held.IsFolder() ? lists.forFolders : lists.forFiles;
    if (!arguments.dryRun) {
        const ChangeResult result = WriteDacl(target, held, object, std::nullopt, list.dacl.get(), messages);
        return result == ChangeResult::kDone ? TellRightsLeft(held, account, messages) : result;
    }
    const std::string before = StateText(target, "before", object, RemarksOn(object));
    UniqueLocal<ACL> dacl;
    if (!Preview(library, list.entries, object, dacl, messages)) return ChangeResult::kFailed;
    Print(before + StateText(target, "after", object, RemarksOn(object)) +
          RightsLeftText(object.dacl, account));
    return ChangeResult::kDone;
}

}  // namespace

bool RunAssign(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
               ConsoleMessages& messages) {
    std::optional<NewLists> lists;
    bool allDone = true;
    AccountRecord shown = account;
    const UniqueLibrary library = LoadAccessListLibrary();
    // The first object's list is made and written in one turn.
    const auto makeAndWrite = [&](const HeldObject& first) {
        ObjectSecurity object;
        lists = MakeLists(arguments, account, first, object, library.get(), messages);
        if (!lists) return ChangeResult::kFailed;
        return GiveList(arguments, shown, targets.front(), first, object, library.get(), *lists, messages);
    };
    messages.SetSubject(arguments.paths.front());
    // Of another object's list the others would become something else than was asked for.
    if (!targets.empty() && targets.front().argument == arguments.paths.front())
        allDone = ChangeInTurn(arguments, targets.front(), makeAndWrite, messages);
    if (!lists) {
        messages.Say("nothing was changed, since all would get the list that is made of this one's");
        return false;
    }
    for (const Target& target : std::span(targets).subspan(1)) {
        messages.SetSubject(target.argument);
        const auto write = [&](const HeldObject& held) {
            ObjectSecurity object;
            if (!ReadForChange(held, object, messages) || !MayReplace(LossesOf(object), arguments, messages))
                return ChangeResult::kFailed;
            return GiveList(arguments, shown, target, held, object, library.get(), *lists, messages);
        };
        allDone = ChangeInTurn(arguments, target, write, messages) && allDone;
    }
    Print(std::string(kNotConsidered) + '\n');
    return allDone;
}

}  // namespace permora
