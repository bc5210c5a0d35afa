// The machine's own users and groups as SIDs, both ways. Rules: docs/platform.md, "Accounts".
#pragma once

#include <sys/types.h>

#include <optional>

#include "platform/api/errors.h"
#include "platform/linux/accounts/account_names.h"
#include "platform/nt/sid.h"

namespace permora::host {

// The SID of the machine itself, below which its users and groups have their relative ids; null when this
// machine has none. Stays the same and valid for the life of the process.
const nt::Sid* MachineSid();

// Every id has a SID, also when the name service does not know it. That of a domain's account is the one that
// it has there: FindSidForId fails while the domain does not say, with kDomainOffline or kNameNotYet; the two
// others then give the one of the number.
DWORD FindSidForId(AccountKind kind, id_t id, nt::Sid& sid);
nt::Sid SidForUser(uid_t user);
nt::Sid SidForGroup(gid_t group);

// The ids that a SID of this machine stands for, if any.
std::optional<uid_t> UserForSid(const nt::Sid& sid);
std::optional<gid_t> GroupForSid(const nt::Sid& sid);

// The host's user that a SID of this machine or of its domain stands for; nothing when it is no user of this
// host. kDomainOffline or kNameNotYet while the domain does not say.
DWORD FindUserForSid(const nt::Sid& sid, std::optional<uid_t>& user);

}  // namespace permora::host
