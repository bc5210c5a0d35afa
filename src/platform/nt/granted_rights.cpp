#include "platform/nt/granted_rights.h"

#include <algorithm>

#include "platform/nt/ace_bits.h"

namespace permora::nt {

// Generic rights are mapped when an entry is set or inherited. An access check ignores the remaining ones.
std::uint32_t GrantedRights(const Acl& acl, std::span<const Sid> sids) {
    std::uint32_t granted = 0;
    std::uint32_t denied = 0;
    for (const Ace& entry : acl.entries) {
        if ((entry.flags & kInheritOnly) != 0 || std::ranges::find(sids, entry.sid) == sids.end()) continue;
        if (entry.type == kAccessAllowedType) granted |= entry.mask & ~denied;
        if (entry.type == kAccessDeniedType) denied |= entry.mask & ~granted;
    }
    return granted & ~kGenericRights;
}

}  // namespace permora::nt
