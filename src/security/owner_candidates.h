// Who may take ownership of objects.
#pragma once

#include <optional>
#include <vector>

#include "platform/resources.h"
#include "security/account_record.h"

namespace permora {

// The token of this process, for asking for and switching on privileges. Null when it cannot be opened.
UniqueHandle OpenOwnToken();

// Switches on the privilege that lets this process take ownership of objects whose lists do not allow it. A
// token that does not hold it stays as it is, which is no failure. False with the last error set.
bool EnableTakeOwnership(HANDLE token);

// The accounts that can be made owners, each once: those to which the machine's policy grants the right to
// take ownership, in its order, then the user of this process when the token holds the privilege, which is
// switched on at that. Nothing when the policy cannot be read, which two error boxes have told. A token that
// tells nothing adds nobody.
std::optional<std::vector<AccountRecord>> FindOwnerCandidates(HWND owner);

}  // namespace permora
