// The edge between the values of platform/nt and SIDs and lists as the system's functions take and give them.
// These stand in memory of the caller and need not be aligned.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "platform/api/security.h"
#include "platform/nt/acl.h"
#include "platform/nt/sid.h"

namespace permora {

// Nothing for null and for bytes that are no SID.
std::optional<nt::Sid> SidOf(PSID sid);
// Lent by `sid`; the system's functions only read it.
PSID RawSid(const nt::Sid& sid);

// The bytes that a list's header claims, unchecked and lent by the list; none for no list.
std::span<const BYTE> ClaimedBytes(PACL acl);
// The whole list; nothing for null and when anything in it is damaged.
std::optional<nt::Acl> AclOf(PACL acl);

// The entries of a list in its order, for showing them: damaged ones too, with what they still say. Entries
// that the system does not hand out are left out. A null list has none.
std::vector<nt::Ace> AcesOf(PACL acl);

}  // namespace permora
