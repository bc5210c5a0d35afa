#include "platform/nt/granted_rights.h"

#include <algorithm>

#include "platform/nt/ace_bits.h"

namespace permora::nt {
namespace {

// Calls `take` with each decision. Generic rights are mapped when an entry is set or inherited. An access
// check ignores the remaining ones.
template <typename Take>
void Decide(const Acl& acl, std::span<const Sid> sids, Take take) {
    std::uint32_t open = ~kGenericRights;
    for (std::size_t index = 0; index < acl.entries.size(); ++index) {
        const Ace& entry = acl.entries[index];
        if ((entry.flags & kInheritOnly) != 0 || (entry.mask & open) == 0) continue;
        const bool isGrant = entry.type == kAccessAllowedType;
        if (!isGrant && entry.type != kAccessDeniedType) continue;
        if (std::ranges::find(sids, entry.sid) == sids.end()) continue;
        take(RightsDecision{index, entry.mask & open, isGrant});
        open &= ~entry.mask;
    }
}

}  // namespace

std::uint32_t GrantedRights(const Acl& acl, std::span<const Sid> sids) {
    std::uint32_t granted = 0;
    Decide(acl, sids, [&](const RightsDecision& decision) {
        if (decision.isGrant) granted |= decision.rights;
    });
    return granted;
}

std::vector<RightsDecision> RightsDecisions(const Acl& acl, std::span<const Sid> sids) {
    std::vector<RightsDecision> decisions;
    Decide(acl, sids, [&](const RightsDecision& decision) { decisions.push_back(decision); });
    return decisions;
}

}  // namespace permora::nt
