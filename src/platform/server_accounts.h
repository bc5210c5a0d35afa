// Accounts as another server sees them, whose share is mounted here.
//
// Names of its accounts, and of the domain that it knows, come by the usual calls (platform/accounts.h): a
// SID stands for one account wherever it is met. LookupAccountNameA takes the server as its system and finds
// there what nobody here is called. What an account belongs to is another matter: each machine has its own
// answer.
#pragma once

#include <string>

#include "platform/accounts.h"

namespace permora {

// As FindAccountGroups, on the server "\\server": the groups by which it judges who comes over the network.
// Known are its own accounts, those of this machine's domain, and the well-known ones; ERROR_NONE_MAPPED for
// all others, and for those of this machine, which nobody is there. Also where the server cannot be asked
// here (no password, no tool). kNameNotYet: it does not answer. kExact is for domains alone
// (ERROR_NOT_SUPPORTED).
//
// Not among the groups are the numbers of the server's own system (S-1-22-...): nobody tells them.
DWORD FindGroupsOfServer(const std::string& server, const nt::Sid& account, GroupsRequest request,
                         AccountGroups& groups);
// The same; for an empty server on this machine.
inline DWORD FindAccountGroupsAt(const std::string& server, const nt::Sid& account, GroupsRequest request,
                                 AccountGroups& groups) {
    return server.empty() ? FindAccountGroups(account, request, groups)
                          : FindGroupsOfServer(server, account, request, groups);
}

// For a program without windows: what waits kLookupTime for a name waits kGroupsTime for a server.
void WaitLongerForServers();

}  // namespace permora
