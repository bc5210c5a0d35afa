// The machine's own users and groups as SIDs, both ways. Rules: docs/platform.md, "Accounts".
#pragma once

#include <sys/types.h>

#include <optional>

#include "platform/nt/sid.h"

namespace permora::host {

// The SID of the machine itself, below which its users and groups have their relative ids; null when this
// machine has none. Stays the same and valid for the life of the process.
const nt::Sid* MachineSid();

// Every id has a SID, also when the name service does not know it.
nt::Sid SidForUser(uid_t user);
nt::Sid SidForGroup(gid_t group);

// The ids that a SID stands for, if any.
std::optional<uid_t> UserForSid(const nt::Sid& sid);
std::optional<gid_t> GroupForSid(const nt::Sid& sid);

}  // namespace permora::host
