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

// Applies the command to the list of the target, whose folder is current.
EditResult EditObject(const Arguments& arguments, const AccountRecord& account, const Target& target,
                      ObjectSecurity& object, ConsoleMessages& messages);

}  // namespace permora
