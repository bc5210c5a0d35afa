#include "cli/assign_command.h"

#include "cli/list_change.h"
#include "cli/listing.h"
#include "cli/terminal_output.h"
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

// The entries that all objects are to get; nothing after a message. What the first object would lose is
// asked here, so that nothing is touched when it may not be changed itself.
std::optional<std::vector<AccessEntry>> MakeEntries(const Arguments& arguments, const AccountRecord& account,
                                                    const Target& first, ConsoleMessages& messages) {
    AccountRights rights;
    ObjectSecurity object;
    if (!ReadForChange(first, object, messages)) return std::nullopt;
    if (!LoadAccountsFromItem(nullptr, first.name.c_str(), first.place, rights)) {
        messages.SayIfSilent("its access list cannot be read");
        return std::nullopt;
    }
    if (!MayReplace(LossesOf(object), arguments, messages)) return std::nullopt;
    const std::size_t index = rights.Add(account);
    rights.Select(index);
    rights.ApplyCombination(arguments.rights);
    rights.Select(index);  // the boxes show what was written, not what was ticked
    if (!HasRights(rights, arguments.rights, messages)) return std::nullopt;
    return rights.Entries();
}

// The object with the new list and what it goes on to inherit; false after a message.
bool Preview(HMODULE library, std::vector<AccessEntry> entries, ObjectSecurity& object,
             ConsoleMessages& messages) {
    if (object.inheritance == DaclInheritance::kFromParent) {
        for (const AccessEntry& entry : object.entries.Entries())
            if (entry.IsInherited()) entries.push_back(entry);
    }
    const UniqueLocal<ACL> dacl = BuildWholeDacl(library, entries, WrittenMasks::kAsHeld, messages);
    if (!dacl) return false;
    object.entries.LoadFromDacl(dacl.get());
    return true;
}

bool ChangeTarget(const Arguments& arguments, const Target& target, const std::vector<AccessEntry>& entries,
                  HMODULE library, PACL dacl, ConsoleMessages& messages) {
    ObjectSecurity object;
    if (!ReadForChange(target, object, messages) || !MayReplace(LossesOf(object), arguments, messages))
        return false;
    if (!arguments.dryRun) return WriteDacl(target, std::nullopt, dacl, messages);
    const std::string before = StateText(target, "before", object, RemarksOn(object));
    if (!Preview(library, entries, object, messages)) return false;
    object.dacl = dacl;  // not none, for the remarks
    Print(before + StateText(target, "after", object, RemarksOn(object)));
    return true;
}

}  // namespace

bool RunAssign(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
               ConsoleMessages& messages) {
    std::optional<std::vector<AccessEntry>> entries;
    UniqueLocal<ACL> dacl;
    const UniqueLibrary library = LoadAccessListLibrary(nullptr);
    messages.SetSubject(arguments.paths.front());
    // Of another object's list the others would become something else than was asked for.
    if (!targets.empty() && targets.front().argument == arguments.paths.front()) {
        entries = MakeEntries(arguments, account, targets.front(), messages);
        if (entries) dacl = BuildWholeDacl(library.get(), *entries, WrittenMasks::kAsHeld, messages);
    }
    if (!dacl) {
        messages.Say("nothing was changed, since all would get the list that is made of this one's");
        return false;
    }
    bool allDone = true;
    for (const Target& target : targets) {
        messages.SetSubject(target.argument);
        allDone = ChangeTarget(arguments, target, *entries, library.get(), dacl.get(), messages) && allDone;
    }
    return allDone;
}

}  // namespace permora
