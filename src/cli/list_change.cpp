#include "cli/list_change.h"

#include <array>

#include "cli/listing.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"

namespace permora {

bool ReadForChange(const Target& target, ObjectSecurity& object, ConsoleMessages& messages) {
    if (!ReadList(target, object, messages)) return false;
    if (!object.inheritance) {
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
    UniqueLocal<ACL> dacl = BuildDacl(nullptr, library, entries);
    if (dacl && GetAceCount(dacl.get()) == entries.size()) return dacl;
    messages.Say("not changed: the new access list cannot be built");
    return nullptr;
}

bool WriteDacl(const Target& target, std::optional<DaclInheritance> inheritance, PACL dacl,
               ConsoleMessages& messages) {
    const std::array<const char*, 1> names = {target.name.c_str()};
    if (WriteObjectDacl(nullptr, names, inheritance, dacl).empty()) {
        Print(PrintableText(target.argument) + ": changed\n");
        return true;
    }
    messages.SayIfSilent("its access list cannot be written");
    return false;
}

std::string StateText(const Target& target, const char* moment, ObjectSecurity& object,
                      const std::vector<std::string>& remarks) {
    return PrintableText(target.argument) + ' ' + moment + ":\n" + InheritsLine(object) +
           RemarkLines(remarks) + RowsText(object.entries);
}

}  // namespace permora
