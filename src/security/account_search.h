// Finds the accounts that this machine knows.
#pragma once

#include <string>
#include <vector>

#include "platform/api/security.h"
#include "platform/resources.h"

namespace permora {

struct FoundAccount {
    UniqueLocal<void> sid;
    std::string name;
    std::string domain;  // empty for accounts without one
    SID_NAME_USE use = SidTypeUnknown;
};

// The well-known SIDs that need no domain, in the order of their type; then the local groups and the local
// users that are not among those before them, each in the order in which the system enumerates them. A SID
// without a name is left out, and an enumeration that fails ends silently with what it gave. Ends the
// process, after the system's message owned by `owner`, when "Advapi32.dll" cannot be loaded or there is no
// memory.
std::vector<FoundAccount> FindLocalAccounts(HWND owner);

// "User", "Alias", "Well-known account"...; empty for a value that has no name.
const char* AccountTypeText(SID_NAME_USE use);

}  // namespace permora
