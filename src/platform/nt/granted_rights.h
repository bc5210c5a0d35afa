// The rights that an access list grants to a holder of given SIDs. Rules: [MS-DTYP] 2.5.3.2.
#pragma once

#include <cstdint>
#include <span>

#include "platform/nt/acl.h"
#include "platform/nt/sid.h"

namespace permora::nt {

// For each right, the first entry that names one of the SIDs and holds the right decides. Inherit-only
// entries, entries of other types than allow and deny, and generic rights do not count.
std::uint32_t GrantedRights(const Acl& acl, std::span<const Sid> sids);

}  // namespace permora::nt
