#include "cli/list_change.h"

#include "cli/listing.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"

namespace permora {

bool ReadForChange(const HeldObject& object, ObjectSecurity& security, ConsoleMessages& messages) {
    if (!ReadList(object, security, messages)) return false;
    if (!security.inheritance) {
        messages.Say("not changed: whether it inherits cannot be read");
        return false;
    }
    return true;
}

Losses LossesOf(PACL dacl, const AccessEntryList& entries) {
    return {entries.OtherTypeCount(), entries.UnacceptableCount(), dacl == nullptr};
}

Losses LossesOf(const ObjectSecurity& object) {
    return LossesOf(object.dacl, object.entries);
}

void DropOtherEntries(AccessEntryList& entries) {
    for (std::size_t i = entries.Entries().size(); i-- > 0;) {
        const AccessEntry& entry = entries.Entries()[i];
        if (entry.IsOfOtherType() || !entry.IsAcceptable()) entries.RemoveEntry(i);
    }
}

bool MayReplace(const Losses& losses, const Arguments& arguments, ConsoleMessages& messages) {
    if (losses.otherEntries > 0 && !arguments.dropOtherEntries) {
        messages.Say("not changed: " + std::to_string(losses.otherEntries) +
                     (losses.otherEntries == 1 ? " entry of another type" : " entries of other types") +
                     " than allow and deny would be lost (--drop-other-entries does it all the same)");
        return false;
    }
    if (losses.unacceptable > 0 && !arguments.dropOtherEntries) {
        messages.Say("not changed: " + std::to_string(losses.unacceptable) +
                     (losses.unacceptable == 1 ? " entry that is" : " entries that are") +
                     " not valid would be lost (--drop-other-entries does it all the same)");
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

UniqueLocal<ACL> BuildWholeDacl(HMODULE library, std::span<const AccessEntry> entries,
                                ConsoleMessages& messages) {
    UniqueLocal<ACL> dacl;
    if (const Outcome outcome = BuildDacl(library, entries, dacl); !outcome.IsDone()) messages.Say(outcome);
    if (dacl && dacl->AceCount == entries.size()) return dacl;
    messages.Say("not changed: the new access list cannot be built");
    return nullptr;
}

ChangeResult WriteDacl(const Target& target, const HeldObject& object, const ObjectSecurity& before,
                       std::optional<DaclInheritance> inheritance, PACL dacl, ConsoleMessages& messages) {
    FailuresBelow below;
    const DWORD error = object.WriteSecurity(DaclWriteInformation(inheritance), {.dacl = dacl},
                                             before.descriptor.get(), below);
    if (error == ERROR_REVISION_MISMATCH) return ChangeResult::kOutOfDate;
    if (error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return ChangeResult::kFailed;
    }
    Print(PrintableText(target.argument) + ": changed\n");
    if (below.count == 0) return ChangeResult::kDone;
    messages.SetSubject(TypedPath(target, below.firstPath));
    messages.SaySystemError(below.firstError);
    messages.SetSubject(target.argument);
    messages.Say("changed itself, but not everything below that inherits: " + std::to_string(below.count) +
                 (below.count == 1 ? " object" : " objects") + " could not be reached or changed");
    return ChangeResult::kFailed;
}

bool ChangeInTurn(const Arguments& arguments, const Target& target,
                  const std::function<ChangeResult(const HeldObject&)>& attempt, ConsoleMessages& messages) {
    constexpr int kAttempts = 5;
    HeldObject object;
    if (!FindTarget(target, object, messages)) return false;
    if (!arguments.dryRun && object.TakeTurn() != ERROR_SUCCESS) {
        messages.Say("not changed: another program of yours is still changing it");
        return false;
    }
    for (int i = 0; i < kAttempts; ++i) {
        const ChangeResult result = attempt(object);
        if (result != ChangeResult::kOutOfDate) return result == ChangeResult::kDone;
    }
    messages.Say("not changed: another program changes it all the time");
    return false;
}

std::string StateText(const Target& target, const char* moment, ObjectSecurity& object,
                      const std::vector<std::string>& remarks) {
    return PrintableText(target.argument) + ' ' + moment + ":\n" + InheritsLine(object) +
           RemarkLines(remarks) + RowsText(object.entries);
}

}  // namespace permora
