// The common steps of all commands that replace access lists: reading with its refusals, building, writing,
// showing.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/messages.h"
#include "cli/recording.h"
#include "cli/target.h"
#include "cli/tree_progress.h"
#include "platform/share_turn.h"
#include "security/dacl_builder.h"
#include "security/object_security.h"

namespace permora {

// On false or null, the reason was printed.

// The losses of a list if it were replaced by one that this program builds.
struct Losses {
    std::size_t otherEntries;  // of types other than allow and deny
    std::size_t unacceptable;  // allow and deny entries that are not valid
    bool everyonesAccess;      // there is no list, so everyone may do everything
};

Losses LossesOf(PACL dacl, const AccessEntryList& entries);

// --drop-other-entries and --replace-null-list.
class ChangeOptions {
  public:
    explicit ChangeOptions(
        OptionPlace place,
        const char* nullListDescription =
            "Change even an object without any access list, which allows everyone everything;\n"
            "afterwards only the accounts in the new list have access");

    bool DropsOtherEntries() const { return static_cast<bool>(dropOtherEntries); }
    // Whether the user accepts the losses.
    bool MayReplace(const Losses& losses, ConsoleMessages& messages) const;

  private:
    Flag dropOtherEntries;
    Flag replaceNullList;
};

// As ReadList, for a list that is to be replaced.
bool ReadForChange(const HeldObject& object, ObjectSecurity& security, ConsoleMessages& messages);

// Removes the losses that the user accepted.
void DropOtherEntries(AccessEntryList& entries);

// The list that an object is to get. Nothing is left out of it silently.
UniqueLocal<ACL> BuildWholeDacl(std::span<const AccessEntry> entries, ConsoleMessages& messages);

// What became of one attempt to change an object.
inline constexpr const char* kDryRunOfEntries =
    "Show the entries before and after the change and write nothing";

enum class ChangeResult {
    kDone,
    kFailed,
    kOutOfDate,  // another program has changed the list since it was read; nothing was written or printed
};

// Writes a list in the place of the one that was read as `before`, and says whether that made a difference.
// Without a choice of `inheritance` the object keeps its own. A failure below the object is reported under
// the name of what failed; the object itself was changed then.
ChangeResult WriteDacl(const Target& target, const HeldObject& object, const ObjectSecurity& before,
                       std::optional<DaclInheritance> inheritance, PACL dacl, Recording& recording,
                       ConsoleMessages& messages);

// The turn of this program on an object that is to be changed. No other program of this user works on it
// meanwhile. What other programs change in between is not lost: the change is tried anew, a few times.
//
//     ChangeTurn turn;
//     if (!turn.Begin(target, mode, messages)) return false;
//     while (turn.TryAgain(messages)) {
//         (read turn.Object(), edit, write)
//         if (result != ChangeResult::kOutOfDate) return result == ChangeResult::kDone;
//     }
//     return false;
class ChangeTurn {
  public:
    // Finds the object and waits for the turn on it. A dry run writes nothing and waits for nobody.
    bool Begin(const Target& target, ChangeMode mode, ConsoleMessages& messages);
    // The same for a share, which is no object to hold.
    bool Begin(const std::string& share, ChangeMode mode, ConsoleMessages& messages);
    // Whether there is to be another attempt.
    bool TryAgain(ConsoleMessages& messages);

    const HeldObject& Object() const { return object; }

  private:
    HeldObject object;
    ShareTurn shareTurn;
    int attempts = 0;
};

// An object before or after a change, under a line that names it.
std::string StateText(const Target& target, const char* moment, ObjectSecurity& object,
                      const std::vector<std::string>& remarks);

}  // namespace permora
