#include "cli/listing.h"

#include <algorithm>

#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "security/access_rows.h"
#include "security/entry_details.h"

namespace permora {

bool ReadList(const HeldObject& object, ObjectSecurity& security, ConsoleMessages& messages) {
    return messages.Check(ReadObjectDacl(object, security));
}

std::vector<std::string> RemarksOn(PACL dacl, const AccessEntryList& entries) {
    if (dacl == nullptr) return {"there is no access list: everyone may do everything"};
    return RemarksOnEntries(entries);
}

std::vector<std::string> RemarksOn(const ObjectSecurity& object) {
    return RemarksOn(object.dacl, object.entries);
}

std::string InheritsLine(const ObjectSecurity& object) {
    return object.inheritance == DaclInheritance::kFromParent ? "  Inherits: yes\n" : "  Inherits: no\n";
}

std::string RemarkLines(const std::vector<std::string>& remarks) {
    std::string lines;
    for (const std::string& remark : remarks)
        lines += "  Note: " + remark + '\n';
    return lines;
}

namespace {

// A column behind the rows. Its title is missing where no row has anything in it.
void AddColumn(const char* title, const std::vector<std::string>& cells,
               std::vector<std::vector<std::string>>& lines) {
    if (std::ranges::all_of(cells, &std::string::empty)) return;
    lines.front().emplace_back(title);
    for (std::size_t i = 0; i < cells.size(); ++i)
        lines[i + 1].push_back(cells[i]);
}

}  // namespace

std::string RowsText(AccessEntryList& entries) {
    return RowsText(entries, {});
}

std::string RowsText(AccessEntryList& entries, const std::vector<EntrySource>& sources) {
    const std::vector<AccessRow> rows = AccessRowsOf(entries, AccountDisplayName);
    if (rows.empty()) return "";
    std::vector<std::vector<std::string>> lines;
    std::vector<std::string> limits;
    std::vector<std::string> origins;
    lines.emplace_back(kAccessRowTitles.begin(), kAccessRowTitles.end());
    for (const AccessRow& row : rows) {
        lines.push_back({row.type, row.name, row.permission, row.inheritance, row.applyTo});
        const BYTE flags = entries.Entries()[row.entryIndex].aceFlags;
        limits.emplace_back(IsForDirectChildrenOnly(flags) ? "direct children only" : "");
        origins.push_back(row.entryIndex < sources.size() ? SourceText(sources[row.entryIndex]) : "");
    }
    // The texts of the other columns are the same whether an entry is handed on or not.
    AddColumn("Handed Down To", limits, lines);
    AddColumn("Inherited From", origins, lines);
    return AlignedTable(lines, "  ");
}

std::string ComparedRowsText(const std::vector<ComparedRow>& rows) {
    std::vector<std::vector<std::string>> lines = {{"", "What", "Name", "Before", "After"}};
    for (const ComparedRow& row : rows)
        lines.push_back({RowChangeText(row.change), row.what, row.name, row.before, row.after});
    return AlignedTable(lines, "  ");
}

std::vector<ComparedRow> ChangedRows(const nt::SecurityDescriptor* before,
                                     const nt::SecurityDescriptor* after, ComparedObject object) {
    std::vector<ComparedRow> rows = CompareDescriptors(before, after, object, AccountDisplayName);
    std::erase_if(rows, [](const ComparedRow& row) { return row.change == RowChange::kNone; });
    return rows;
}

std::string ChangedRowsText(const std::vector<ComparedRow>& rows) {
    return rows.empty() ? "  The same, but for what says nothing about access\n" : ComparedRowsText(rows);
}

namespace {

using ListOfDescriptor = BOOL(WINAPI*)(PSECURITY_DESCRIPTOR, LPBOOL, PACL*, LPBOOL);

// The first entry of a list without a text form; empty when each has one.
std::string EntryWithoutText(PSECURITY_DESCRIPTOR descriptor, ListOfDescriptor listOf, const char* listName) {
    PACL list = nullptr;
    BOOL isPresent = FALSE;
    BOOL isDefaulted = FALSE;
    if (listOf(descriptor, &isPresent, &list, &isDefaulted) == FALSE || isPresent == FALSE) return {};
    const std::vector<EntryDetails> entries = DetailsOfEntries(list);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (!entries[i].text.empty()) continue;
        return "entry " + std::to_string(i + 1) + " of its " + listName + " (" +
               EntryTypeName(entries[i].aceType) + ") has no text form; --json shows the others";
    }
    return {};
}

void SayWhyNoText(PSECURITY_DESCRIPTOR descriptor, DWORD error, ConsoleMessages& messages) {
    std::string reason = EntryWithoutText(descriptor, GetSecurityDescriptorDacl, "access list");
    if (reason.empty())
        reason = EntryWithoutText(descriptor, GetSecurityDescriptorSacl, "system access list");
    if (reason.empty())
        messages.SaySystemError(error);
    else
        messages.Say(reason);
}

}  // namespace

bool PrintDescriptor(PSECURITY_DESCRIPTOR descriptor, SECURITY_INFORMATION parts, const std::string& heading,
                     ConsoleMessages& messages) {
    char* converted = nullptr;
    if (ConvertSecurityDescriptorToStringSecurityDescriptorA(descriptor, SDDL_REVISION_1, parts, &converted,
                                                             nullptr) == FALSE) {
        SayWhyNoText(descriptor, GetLastError(), messages);
        return false;
    }
    const UniqueLocal<char> owned(converted);
    const std::string text = converted;
    // Programs read it again, so it is printed unchanged or not at all.
    if (PrintableText(text) != text) {
        messages.Say("its text has characters that cannot be shown as they are; --json shows them");
        return false;
    }
    Print((heading.empty() ? "" : PrintableText(heading) + '\n') + text + '\n');
    return true;
}

}  // namespace permora
