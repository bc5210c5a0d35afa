// The shares of this machine, as values.
#pragma once

#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/shares.h"

namespace permora {

// A share beside its access list. Texts are in the ANSI code page.
struct ShareFacts {
    std::string name;
    DWORD type = STYPE_DISKTREE;
    std::string remark;
    std::string path;   // of the folder; empty for what is no folder
    DWORD maxUses = 0;  // of users at the same time
};

// As the share was listed. Without rights on the server `path` and `maxUses` may be unreadable: they keep
// their first values then, and `error` is the reason.
struct ListedShare : ShareFacts {
    NET_API_STATUS error = NERR_Success;
};

ShareFacts FactsOf(const SHARE_INFO_502& record);

// Appends all shares, in the server's order. On failure, `shares` has those before it.
NET_API_STATUS ListShares(std::vector<ListedShare>& shares);

// The folder that is shared under a name.
NET_API_STATUS FindSharePath(const std::string& name, std::string& path);

}  // namespace permora
