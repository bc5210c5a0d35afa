#include "cli/change_command.h"

#include <array>

#include "cli/entry_edits.h"
#include "cli/listing.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "security/account_lookup.h"
#include "security/dacl_builder.h"
#include "security/object_security.h"

namespace permora {
namespace {

bool ReadForChange(const Target& target, ObjectSecurity& object, ConsoleMessages& messages) {
    const DWORD error = EnterFolder(target);
    if (error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return false;
    }
    if (!ReadObjectDacl(nullptr, target.name.c_str(), target.place, object)) {
        if (!messages.HasSpoken()) messages.Say("its access list cannot be read");
        return false;
    }
    if (!object.inheritance) {
        messages.Say("not changed: whether it inherits cannot be read");
        return false;
    }
    return true;
}

// What a list that was read would lose if it were replaced by one that this program builds.
struct Losses {
    std::size_t otherEntries;  // of types other than allow and deny
    bool everyonesAccess;      // there is no list, so everyone may do everything
};

// Whether the user accepts the losses; says which ones keep the list as it is.
bool MayReplace(const Losses& losses, const Arguments& arguments, ConsoleMessages& messages) {
    if (losses.otherEntries > 0 && !arguments.dropOtherEntries) {
        messages.Say("not changed: " + std::to_string(losses.otherEntries) +
                     (losses.otherEntries == 1 ? " entry of another type" : " entries of other types") +
                     " than allow and deny would be lost (--drop-other-entries does it all the same)");
        return false;
    }
    if (losses.everyonesAccess && !arguments.replaceNullList) {
        messages.Say(
            "not changed: everyone may do everything now, and only those in the new list could afterwards "
            "(--replace-null-list does it all the same)");
        return false;
    }
    return true;
}

void DropOtherEntries(AccessEntryList& entries) {
    for (std::size_t i = entries.Entries().size(); i-- > 0;) {
        const AccessEntry& entry = entries.Entries()[i];
        if (!entry.IsAllow() && !entry.IsDeny()) entries.RemoveEntry(i);
    }
}

// An object before or after a change, under a line that names it.
std::string StateText(const Target& target, const char* moment, ObjectSecurity& object,
                      const std::vector<std::string>& remarks) {
    return PrintableText(target.argument) + ' ' + moment + ":\n" + InheritsLine(object) +
           RemarkLines(remarks) + RowsText(object.entries);
}

// The list that an object is to get; null after a message. Nothing is left out of it silently.
UniqueLocal<ACL> Build(HMODULE library, const AccessEntryList& entries, ConsoleMessages& messages) {
    UniqueLocal<ACL> dacl = BuildDacl(nullptr, library, entries);
    if (dacl && GetAceCount(dacl.get()) == entries.Entries().size()) return dacl;
    messages.Say("not changed: the new access list cannot be built");
    return nullptr;
}

bool Write(const Target& target, DaclInheritance inheritance, PACL dacl, ConsoleMessages& messages) {
    const std::array<const char*, 1> names = {target.name.c_str()};
    if (WriteObjectDacl(nullptr, names, inheritance, dacl).empty()) {
        Print(PrintableText(target.argument) + ": changed\n");
        return true;
    }
    if (!messages.HasSpoken()) messages.Say("its access list cannot be written");
    return false;
}

bool ChangeObject(const Arguments& arguments, const AccountRecord& account, const Target& target,
                  HMODULE library, ConsoleMessages& messages) {
    ObjectSecurity object;
    if (!ReadForChange(target, object, messages)) return false;
    const DaclInheritance inheritanceBefore = *object.inheritance;
    const Losses losses = {object.entries.OtherTypeCount(), object.dacl == nullptr};
    std::string preview;
    if (arguments.dryRun) preview = StateText(target, "before", object, RemarksOn(object));

    const EditResult result = EditObject(arguments, account, target, object, messages);
    if (result != EditResult::kChanged) return result == EditResult::kNothingToDo;
    if (!MayReplace(losses, arguments, messages)) return false;
    DropOtherEntries(object.entries);
    const UniqueLocal<ACL> dacl = Build(library, object.entries, messages);
    if (!dacl) return false;
    if (!arguments.dryRun) return Write(target, *object.inheritance, dacl.get(), messages);

    object.dacl = dacl.get();
    const bool inheritsAnew =
        *object.inheritance != inheritanceBefore && arguments.inheritance == InheritanceChange::kOn;
    const std::vector<std::string> parentsPart = {"the entries that the parent hands down come to these"};
    Print(preview + StateText(target, "after", object, inheritsAnew ? parentsPart : RemarksOn(object)));
    return true;
}

}  // namespace

DWORD FindAccount(const std::string& text, AccountRecord& account) {
    UniqueLocal<void> sid;
    if (text.starts_with("S-") || text.starts_with("s-")) {
        // Only a text of this form: the two-letter abbreviations of SIDs could be names of users.
        PSID found = nullptr;
        if (ConvertStringSidToSidA(text.c_str(), &found) == FALSE) return GetLastError();
        sid.reset(found);
    } else if (const DWORD error = LookupSidByName(text.c_str(), sid); error != ERROR_SUCCESS) {
        return error;
    }
    return account.SetSid(sid.get()) ? ERROR_SUCCESS : ERROR_INVALID_SID;
}

bool RunChange(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
               ConsoleMessages& messages) {
    const UniqueLibrary library = LoadAccessListLibrary(nullptr);
    bool allDone = true;
    for (const Target& target : targets) {
        messages.SetSubject(target.argument);
        allDone = ChangeObject(arguments, account, target, library.get(), messages) && allDone;
    }
    return allDone;
}

}  // namespace permora
