#include "cli/entry_edits.h"

#include <string>

#include "platform/api/errors.h"
#include "security/access_rights.h"

namespace permora {
namespace {

constexpr int kThisFolderOnly = 0;
constexpr int kThisFolderSubfoldersAndFiles = 1;

EditResult AddRights(const Arguments& arguments, const AccountRecord& account, EntryPlace place,
                     AccessEntryList& entries, ConsoleMessages& messages) {
    PermissionChoice choice;
    choice.account = account;
    (arguments.command == Command::kGrant ? choice.allowMask : choice.denyMask) = arguments.rights;
    if (place == EntryPlace::kFolder) {
        choice.applyIndex = arguments.scopeIndex.value_or(kThisFolderSubfoldersAndFiles);
        choice.childrenOnly = arguments.childrenOnly;
    } else {
        // There is nothing below it: the part of a scope that reaches further says nothing there.
        const int scope = arguments.scopeIndex.value_or(kThisFolderOnly);
        if ((ScopeFlagsFromIndex(scope) & INHERIT_ONLY_ACE) != 0) {
            messages.Say(std::string("not changed: on a ") + (place == EntryPlace::kFile ? "file" : "share") +
                         " an entry for \"" + std::string(ScopeTextFromFlags(ScopeFlagsFromIndex(scope))) +
                         "\" would do nothing");
            return EditResult::kRefused;
        }
        choice.applyIndex = kThisFolderOnly;
    }
    entries.AddFromDialog(choice);
    return EditResult::kChanged;
}

EditResult RevokeRights(const Arguments& arguments, const AccountRecord& account, AccessEntryList& entries,
                        ConsoleMessages& messages) {
    EditResult result = EditResult::kNothingToDo;
    bool inheritedStay = false;
    for (std::size_t i = entries.Entries().size(); i-- > 0;) {
        const AccessEntry& entry = entries.Entries()[i];
        if (entry.IsOfOtherType() || !IsSameAccount(entry.account, account)) continue;
        if (entry.IsInherited()) {
            inheritedStay = true;
        } else {
            entries.RemoveEntry(i);
            result = EditResult::kChanged;
        }
    }
    if (result == EditResult::kNothingToDo) {
        messages.Say("nothing to remove: no explicit entry is for " + arguments.account);
    }
    if (inheritedStay) messages.Say("the inherited entries for " + arguments.account + " stay");
    return result;
}

EditResult ChangeInheritance(InheritanceChange change, const Target& target, ObjectSecurity& object,
                             ConsoleMessages& messages) {
    if (target.place == ItemPlace::kDriveRoot) {
        messages.Say("not changed: the root of a drive has no parent to inherit from");
        return EditResult::kRefused;
    }
    if (change == InheritanceChange::kOn) {
        // Entries that a protected list still calls inherited are stale: the parent hands down its own anew.
        if (object.inheritance == DaclInheritance::kProtected) object.entries.RemoveInheritedEntries();
        object.inheritance = DaclInheritance::kFromParent;
        return EditResult::kChanged;
    }
    if (change == InheritanceChange::kCopy) object.entries.CopyInheritedEntries();
    object.entries.RemoveInheritedEntries();
    object.inheritance = DaclInheritance::kProtected;
    return EditResult::kChanged;
}

}  // namespace

EditResult EditEntries(const Arguments& arguments, const AccountRecord& account, EntryPlace place,
                       AccessEntryList& entries, ConsoleMessages& messages) {
    if (arguments.command == Command::kRevoke) return RevokeRights(arguments, account, entries, messages);
    return AddRights(arguments, account, place, entries, messages);
}

EditResult EditObject(const Arguments& arguments, const AccountRecord& account, const Target& target,
                      ObjectSecurity& object, ConsoleMessages& messages) {
    if (arguments.command == Command::kInherit)
        return ChangeInheritance(arguments.inheritance, target, object, messages);
    bool isFolder = false;
    if (const DWORD error = AskIsFolder(target, isFolder); error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return EditResult::kRefused;
    }
    return EditEntries(arguments, account, isFolder ? EntryPlace::kFolder : EntryPlace::kFile, object.entries,
                       messages);
}

}  // namespace permora
