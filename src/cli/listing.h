// How an object's access list reads in a terminal: the pieces that the listing and the previews share.
#pragma once

#include <string>
#include <vector>

#include "cli/messages.h"
#include "cli/target.h"
#include "security/object_security.h"

namespace permora {

// Makes the target's folder current and reads its list; false after a message.
bool ReadList(const Target& target, ObjectSecurity& object, ConsoleMessages& messages);

// What must be known about a list beside its rows, a sentence each: that there is none, that it is empty, out
// of order, or holds entries that no row shows.
std::vector<std::string> RemarksOn(PACL dacl, const AccessEntryList& entries);
std::vector<std::string> RemarksOn(const ObjectSecurity& object);

// Indented lines.
std::string InheritsLine(const ObjectSecurity& object);
std::string RemarkLines(const std::vector<std::string>& remarks);
// The rows under their titles; empty without rows.
std::string RowsText(AccessEntryList& entries);

// Prints owner, group and list of a descriptor as text; false after a message when that cannot be done.
bool PrintDescriptor(PSECURITY_DESCRIPTOR descriptor, ConsoleMessages& messages);

}  // namespace permora
