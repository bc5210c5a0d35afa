// Who may take ownership of objects.
#pragma once

#include <optional>
#include <vector>

#include "platform/resources.h"
#include "security/account_record.h"
#include "security/outcome.h"

namespace permora {

// The token of this process, for asking for and switching on privileges. Null when it cannot be opened.
UniqueHandle OpenOwnToken();

// Switches on the privilege that lets this process take ownership of objects whose lists do not allow it. A
// token that does not hold it stays as it is, which is no failure. A system error code.
DWORD EnableTakeOwnership(HANDLE token);

struct OwnerCandidates {
    // The accounts that can be made owners, each once: those to which the machine's policy grants the right
    // to take ownership, in its order, then the user of this process when the token holds the privilege.
    // Nothing when the policy cannot be read. A token that cannot be read adds nobody.
    std::optional<std::vector<AccountRecord>> accounts;
    Outcomes failures;
};

// Also switches on the token's privilege to take ownership; where that fails, there are candidates all the
// same.
OwnerCandidates FindOwnerCandidates();

}  // namespace permora
