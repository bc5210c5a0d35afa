#include "cli/change_command.h"

#include "cli/entry_edits.h"
#include "cli/list_change.h"
#include "cli/listing.h"
#include "cli/terminal_output.h"
#include "platform/api/errors.h"
#include "security/account_lookup.h"

namespace permora {
namespace {

ChangeResult ChangeObject(const Arguments& arguments, const AccountRecord& account, const Target& target,
                          const HeldObject& held, HMODULE library, ConsoleMessages& messages) {
    ObjectSecurity object;
    if (!ReadForChange(held, object, messages)) return ChangeResult::kFailed;
    const DaclInheritance inheritanceBefore = *object.inheritance;
    const Losses losses = LossesOf(object);
    std::string preview;
    if (arguments.dryRun) preview = StateText(target, "before", object, RemarksOn(object));

    const EntryPlace place = held.IsFolder() ? EntryPlace::kFolder : EntryPlace::kFile;
    const EditResult result = EditObject(arguments, account, target, place, object, messages);
    if (result == EditResult::kNothingToDo) return ChangeResult::kDone;
    if (result != EditResult::kChanged || !MayReplace(losses, arguments, messages))
        return ChangeResult::kFailed;
    DropOtherEntries(object.entries);
    const UniqueLocal<ACL> dacl = BuildWholeDacl(library, object.entries.Entries(), messages);
    if (!dacl) return ChangeResult::kFailed;
    if (!arguments.dryRun) return WriteDacl(target, held, object, object.inheritance, dacl.get(), messages);

    object.dacl = dacl.get();
    const bool inheritsAnew =
        *object.inheritance != inheritanceBefore && arguments.inheritance == InheritanceChange::kOn;
    const std::vector<std::string> parentsPart = {"the entries that the parent hands down come to these"};
    Print(preview + StateText(target, "after", object, inheritsAnew ? parentsPart : RemarksOn(object)));
    return ChangeResult::kDone;
}

}  // namespace

DWORD FindAccount(const std::string& text, AccountRecord& account) {
    // Only a text of this form: the two-letter abbreviations of SIDs could be names of users.
    if (!text.starts_with("S-") && !text.starts_with("s-")) return LookupAccountByName(text.c_str(), account);
    PSID found = nullptr;
    if (ConvertStringSidToSidA(text.c_str(), &found) == FALSE) return GetLastError();
    const UniqueLocal<void> sid(found);
    return account.SetSid(sid.get()) ? ERROR_SUCCESS : ERROR_INVALID_SID;
}

bool RunChange(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
               ConsoleMessages& messages) {
    const UniqueLibrary library = LoadAccessListLibrary();
    bool allDone = true;
    for (const Target& target : targets) {
        messages.SetSubject(target.argument);
        const auto attempt = [&](const HeldObject& object) {
            return ChangeObject(arguments, account, target, object, library.get(), messages);
        };
        allDone = ChangeInTurn(arguments, target, attempt, messages) && allDone;
    }
    return allDone;
}

}  // namespace permora
