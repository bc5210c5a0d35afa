// The groups of the account that a command is about.
#pragma once

#include <optional>

#include "platform/accounts.h"
#include "security/account_record.h"

namespace permora {

// Asked for once, however many objects there are: a domain takes a tenth of a second.
class KnownGroups {
  public:
    // The result of FindAccountGroups, of the first call for all. `account` has a SID.
    DWORD Find(const AccountRecord& account, GroupsRequest request) {
        if (!error) error = FindAccountGroups(*account.sid, request, groups);
        return *error;
    }
    // After a Find that returned 0.
    const AccountGroups& Groups() const { return groups; }

  private:
    std::optional<DWORD> error;
    AccountGroups groups;
};

}  // namespace permora
