// The groups of the account that a command is about.
#pragma once

#include <optional>
#include <string>

#include "platform/accounts.h"
#include "platform/server_accounts.h"
#include "security/account_record.h"

namespace permora {

// Asked for once, however many objects there are: a domain takes a tenth of a second.
class KnownGroups {
  public:
    // The result of FindAccountGroupsAt, of the first call for all of one server. `account` has a SID.
    DWORD Find(const std::string& onServer, const AccountRecord& account, GroupsRequest request) {
        if (!error || server != onServer) {
            server = onServer;
            error = FindAccountGroupsAt(server, *account.sid, request, groups);
        }
        return *error;
    }
    // After a Find that returned 0.
    const AccountGroups& Groups() const { return groups; }

  private:
    std::string server;
    std::optional<DWORD> error;
    AccountGroups groups;
};

}  // namespace permora
