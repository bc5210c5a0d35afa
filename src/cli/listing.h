// How an object's access list reads in a terminal: the pieces that the listing and the previews share.
#pragma once

#include <string>
#include <vector>

#include "cli/messages.h"
#include "cli/target.h"
#include "security/descriptor_comparison.h"
#include "security/entry_source.h"
#include "security/object_security.h"

namespace permora {

// Reads the list of a target that was found; false after a message.
bool ReadList(const HeldObject& object, ObjectSecurity& security, ConsoleMessages& messages);

// Remarks about a list beside its rows, a sentence each: that there is none, that it is empty, out of order,
// or holds entries that no row shows.
std::vector<std::string> RemarksOn(PACL dacl, const AccessEntryList& entries);
std::vector<std::string> RemarksOn(const ObjectSecurity& object);

// Indented lines.
std::string InheritsLine(const ObjectSecurity& object);
std::string RemarkLines(const std::vector<std::string>& remarks);
// The rows under their titles; empty without rows.
std::string RowsText(AccessEntryList& entries);
// The same with where each entry is inherited from; `sources` has one for each entry.
std::string RowsText(AccessEntryList& entries, const std::vector<EntrySource>& sources);

// The rows of a comparison under their titles.
std::string ComparedRowsText(const std::vector<ComparedRow>& rows);
// Only the rows that differ between two descriptors; a line says so where none does. Null: there is none.
std::vector<ComparedRow> ChangedRows(const nt::SecurityDescriptor* before,
                                     const nt::SecurityDescriptor* after, ComparedObject object);
std::string ChangedRowsText(const std::vector<ComparedRow>& rows);

// Prints parts of a descriptor as one line of text, below a line with `heading` unless that is empty; false
// after a message when that cannot be done.
bool PrintDescriptor(PSECURITY_DESCRIPTOR descriptor, SECURITY_INFORMATION parts, const std::string& heading,
                     ConsoleMessages& messages);

}  // namespace permora
