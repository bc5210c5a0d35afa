// The command that tells what an account may do: effective.
#pragma once

#include <vector>

#include "cli/arguments.h"
#include "cli/messages.h"
#include "cli/target.h"
#include "security/account_record.h"

namespace permora {

// Prints which rights the access list of each target leaves to the account and the groups that it belongs to,
// and last what such a list does not tell. Returns whether all could be read; an object that cannot is named
// on standard error and left out.
bool RunEffective(const Arguments& arguments, const AccountRecord& account,
                  const std::vector<Target>& targets, ConsoleMessages& messages);

}  // namespace permora
