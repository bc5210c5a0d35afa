// The rights that an access list grants to a holder of given SIDs. Rules: [MS-DTYP] 2.5.3.2.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/nt/acl.h"
#include "platform/nt/sid.h"

namespace permora::nt {

// For each right, the first entry that names one of the SIDs and holds the right decides. Inherit-only
// entries, entries of other types than allow and deny, and generic rights do not count.
std::uint32_t GrantedRights(const Acl& acl, std::span<const Sid> sids);

// What one entry decides: the rights that it holds and no earlier entry has decided.
struct RightsDecision {
    std::size_t index;     // of the entry in the list
    std::uint32_t rights;  // never 0
    bool isGrant;          // else a denial
};

// The decisions behind GrantedRights, in the list's order. No right is in two of them.
std::vector<RightsDecision> RightsDecisions(const Acl& acl, std::span<const Sid> sids);

}  // namespace permora::nt
