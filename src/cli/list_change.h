// What the commands that replace access lists do alike: reading with its refusals, building, writing,
// showing.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"
#include "security/dacl_builder.h"
#include "security/object_security.h"

namespace permora {

// What answers false or null has said why.

// As ReadList, for a list that is to be replaced.
bool ReadForChange(const Target& target, ObjectSecurity& object, ConsoleMessages& messages);

// What a list that was read would lose if it were replaced by one that this program builds.
struct Losses {
    std::size_t otherEntries;  // of types other than allow and deny
    std::size_t unacceptable;  // allow and deny entries that are not valid
    bool everyonesAccess;      // there is no list, so everyone may do everything
};

Losses LossesOf(PACL dacl, const AccessEntryList& entries);
Losses LossesOf(const ObjectSecurity& object);
// Whether the user accepts the losses.
bool MayReplace(const Losses& losses, const Arguments& arguments, ConsoleMessages& messages);

// Takes out what the user accepted to lose.
void DropOtherEntries(AccessEntryList& entries);

// The list that an object is to get. Nothing is left out of it silently.
UniqueLocal<ACL> BuildWholeDacl(HMODULE library, std::span<const AccessEntry> entries,
                                ConsoleMessages& messages);

// Writes a list and says so. Without a choice of `inheritance` the object keeps its own.
bool WriteDacl(const Target& target, std::optional<DaclInheritance> inheritance, PACL dacl,
               ConsoleMessages& messages);

// An object before or after a change, under a line that names it.
std::string StateText(const Target& target, const char* moment, ObjectSecurity& object,
                      const std::vector<std::string>& remarks);

}  // namespace permora
