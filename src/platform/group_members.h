// Who is in a group: a service of our own beside the system's, which asks this machine, its file server and
// its domain alike.
#pragma once

#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/nt/sid.h"

namespace permora {

// Whether the system calls accounts of this type groups.
constexpr bool IsGroup(SID_NAME_USE use) {
    return use == SidTypeGroup || use == SidTypeAlias || use == SidTypeWellKnownGroup;
}

struct GroupMembers {
    std::vector<nt::Sid> sids;  // its direct members, users and groups, each once
    // It consists of whoever has logged on in some way (Everyone, Authenticated Users): nobody keeps a list.
    bool isOpen = false;
};

// 0 or an error code; `members` is then as it was, and nothing may be said about who is in the group.
// ERROR_NONE_MAPPED: it is no group that is known here. ERROR_ACCESS_DENIED: only root (an administrator) may
// ask. kDomainOffline: its domain does not answer. ERROR_NOT_SUPPORTED: a group of a domain that cannot be
// asked from here. Waits for a domain up to a minute. Any thread.
DWORD FindGroupMembers(const nt::Sid& group, GroupMembers& members);

}  // namespace permora
