// Finds the accounts that this machine knows.
#pragma once

#include <vector>

#include "security/account_record.h"
#include "security/outcome.h"

namespace permora {

// Appends the accounts, their names looked up: the well-known SIDs that need no domain, in the order of their
// type; then the local groups and the local users that are not among those before them, in the order in which
// the system enumerates them. A SID without a name is left out. An enumeration that fails ends with what it
// gave. Fails where "Advapi32.dll" cannot be loaded (Step::kLoadLibrary), and nothing is appended then.
Outcome FindLocalAccounts(std::vector<AccountRecord>& accounts);

// "User", "Alias", "Well-known account"...; empty for a value that has no name.
const char* AccountTypeText(SID_NAME_USE use);

}  // namespace permora
