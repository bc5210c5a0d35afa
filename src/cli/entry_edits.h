// What each changing command does to an access list that was read. Nothing is written here.
#pragma once

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"
#include "security/account_record.h"
#include "security/object_security.h"

namespace permora {

enum class EditResult {
    kChanged,      // the list is to be written
    kNothingToDo,  // it already is as asked for; the reason was said
    kRefused,      // the change would make no sense here; the reason was said
};

// What the list belongs to. Only folders have something below them.
enum class EntryPlace { kFolder, kFile, kShare };

// Applies grant, deny or revoke to entries that were loaded from `dacl`.
EditResult EditEntries(const Arguments& arguments, const AccountRecord& account, EntryPlace place, PACL dacl,
                       AccessEntryList& entries, ConsoleMessages& messages);

// Applies one of these or inherit to the list of the target, which is a folder or a file.
EditResult EditObject(const Arguments& arguments, const AccountRecord& account, const Target& target,
                      EntryPlace place, ObjectSecurity& object, ConsoleMessages& messages);

}  // namespace permora
