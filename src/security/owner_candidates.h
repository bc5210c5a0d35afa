// Who may take ownership of objects.
#pragma once

#include <optional>
#include <vector>

#include "platform/nt/sid.h"
#include "platform/resources.h"
#include "security/account_record.h"
#include "security/outcome.h"

namespace permora {

// The token of this process, for reading and enabling privileges. Null when it cannot be opened.
UniqueHandle OpenOwnToken();

// The account that runs this program; nothing when its token cannot be read.
std::optional<nt::Sid> OwnAccount();

// Enables the privilege to take ownership of objects whose lists do not allow it. No failure for a token that
// does not hold it. A system error code.
DWORD EnableTakeOwnership(HANDLE token);

struct OwnerCandidates {
    // The accounts that can be made owners, each once: those to which the machine's policy grants the right
    // to take ownership, in its order, then the user of this process when the token holds the privilege.
    // Nothing when the policy cannot be read. A token that cannot be read adds nobody.
    std::optional<std::vector<AccountRecord>> accounts;
    // Whether the token holds the privilege to restore objects, with which any account can be made the owner.
    bool isAnyoneAllowed = false;
    Outcomes failures;
};

// Also enables the token's privilege to take ownership; a failure of that is reported beside the accounts.
OwnerCandidates FindOwnerCandidates();

}  // namespace permora
