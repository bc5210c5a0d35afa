// The accounts of servers whose shares are mounted here, and of the domains that only these know.
#pragma once

#include <chrono>
#include <string_view>

#include "platform/linux/accounts/account_source.h"
#include "platform/linux/accounts/mounted_server.h"

namespace permora::host {

class ServerAccounts : public AccountSource {
  public:
    DWORD FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) override;
    // With the server's name before it alone: a bare name means somebody here.
    DWORD FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) override;
    // None: what a server's accounts belong to counts on that server alone (MountedServer).
    DWORD FindGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) override;
    // None: a server may have any number of accounts, and most searches are not about it.
    DWORD Search(const std::atomic<bool>& isStopped, FoundRows& rows) override;
    std::string Name() override { return {}; }

    // Whether a server has told that the SID is of its own, and no domain of this machine knows better. Never
    // waits.
    static bool Owns(const nt::Sid& sid);
};

ServerAccounts& TheServerAccounts();

// The server with this name, with or without leading backslashes, in any letter case; null when nothing of it
// is mounted here. Lives as long as the process.
MountedServer* FindMountedServer(std::string_view system);

}  // namespace permora::host
