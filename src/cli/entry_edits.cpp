#include "cli/entry_edits.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "security/access_rights.h"
#include "security/entry_details.h"

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

// The types of an account's explicit entries that are neither allow nor deny, each once: "Callback allow".
std::string OtherTypesOf(const AccountRecord& account, PACL dacl) {
    std::vector<std::string> names;
    for (const EntryDetails& entry : DetailsOfEntries(dacl)) {
        const bool isOther =
            entry.aceType != ACCESS_ALLOWED_ACE_TYPE && entry.aceType != ACCESS_DENIED_ACE_TYPE;
        std::string name = EntryTypeName(entry.aceType);
        if (isOther && !entry.IsInherited() && IsSameAccount(entry.account, account) &&
            std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(std::move(name));
    }
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

void SayNothingToRemove(const Arguments& arguments, const AccountRecord& account, PACL dacl,
                        ConsoleMessages& messages) {
    const std::string others = OtherTypesOf(account, dacl);
    if (others.empty())
        messages.Say("nothing to remove: no explicit entry is for " + arguments.account);
    else
        messages.Say("nothing removed: the explicit entries for " + arguments.account +
                     " are of other types than allow and deny, and stay: " + others);
}

EditResult RevokeRights(const Arguments& arguments, const AccountRecord& account, PACL dacl,
                        AccessEntryList& entries, ConsoleMessages& messages) {
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
    // Another attempt after a change by another program need not say it again.
    if (inheritedStay) messages.SayIfSilent("the inherited entries for " + arguments.account + " stay");
    if (result == EditResult::kNothingToDo) SayNothingToRemove(arguments, account, dacl, messages);
    return result;
}

EditResult ChangeInheritance(InheritanceChange change, const Target& target, ObjectSecurity& object,
                             ConsoleMessages& messages) {
    if (target.place == PlaceKind::kDrives) {
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

EditResult EditEntries(const Arguments& arguments, const AccountRecord& account, EntryPlace place, PACL dacl,
                       AccessEntryList& entries, ConsoleMessages& messages) {
    if (arguments.command == Command::kRevoke)
        return RevokeRights(arguments, account, dacl, entries, messages);
    return AddRights(arguments, account, place, entries, messages);
}

EditResult EditObject(const Arguments& arguments, const AccountRecord& account, const Target& target,
                      EntryPlace place, ObjectSecurity& object, ConsoleMessages& messages) {
    if (arguments.command == Command::kInherit)
        return ChangeInheritance(arguments.inheritance, target, object, messages);
    return EditEntries(arguments, account, place, object.dacl, object.entries, messages);
}

}  // namespace permora
