// The commands that change access lists: grant, deny, revoke and inherit.
#pragma once

#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"
#include "security/account_record.h"

namespace permora {

// The account that a name, DOMAIN\name or SID text means. On failure `account` is untouched and the result is
// a system error code.
DWORD FindAccount(const std::string& text, AccountRecord& account);

// Changes every target in order, or with dryRun prints what the change would make of it. `account` is the one
// that grant, deny and revoke are about. An object that cannot be changed is named on standard error with the
// reason and left as it is; the others are still done. Returns whether all were done.
bool RunChange(const Arguments& arguments, const AccountRecord& account, const std::vector<Target>& targets,
               ConsoleMessages& messages);

}  // namespace permora
