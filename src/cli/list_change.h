// What the commands that replace access lists do alike: reading with its refusals, building, writing,
// showing.
#pragma once

#include <cstddef>
#include <functional>
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
bool ReadForChange(const HeldObject& object, ObjectSecurity& security, ConsoleMessages& messages);

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

// What became of one attempt to change an object.
enum class ChangeResult {
    kDone,
    kFailed,
    kOutOfDate,  // another program has changed the list since it was read; nothing was written nor said
};

// Writes a list in the place of the one that was read as `before`, and says so. Without a choice of
// `inheritance` the object keeps its own. A failure below the object is told under the name of what failed,
// and the object itself was changed then.
ChangeResult WriteDacl(const Target& target, const HeldObject& object, const ObjectSecurity& before,
                       std::optional<DaclInheritance> inheritance, PACL dacl, ConsoleMessages& messages);

// Changes an object that is found for it: `attempt` reads it, edits what it has read and writes that. While
// it is at work no other program of this user is; what other programs change in between is not lost, since
// the attempt is made anew, a few times. With dryRun nothing is written, so nobody has to wait. False after a
// message.
bool ChangeInTurn(const Arguments& arguments, const Target& target,
                  const std::function<ChangeResult(const HeldObject&)>& attempt, ConsoleMessages& messages);

// An object before or after a change, under a line that names it.
std::string StateText(const Target& target, const char* moment, ObjectSecurity& object,
                      const std::vector<std::string>& remarks);

}  // namespace permora
