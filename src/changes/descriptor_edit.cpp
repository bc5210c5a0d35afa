#include "changes/descriptor_edit.h"

#include "platform/nt/ace_bits.h"

namespace permora {

bool LetsNobodyIn(const nt::SecurityDescriptor& descriptor) {
    static const nt::Sid kEveryone(1, {0});
    if (descriptor.daclState != nt::DaclState::kList) return false;
    std::uint32_t denied = 0;
    for (const nt::Ace& entry : descriptor.dacl.entries) {
        if ((entry.flags & nt::kInheritOnly) != 0) continue;
        if (entry.type == nt::kAccessDeniedType && entry.sid == kEveryone)
            denied |= entry.mask;
        else if (nt::IsAllowType(entry.type) && (entry.mask & ~denied) != 0)
            return false;
    }
    return true;
}

bool IsInheritedIn(const nt::SecurityDescriptor& descriptor, const nt::Ace& entry) {
    return !descriptor.IsDaclProtected() && (entry.flags & nt::kInherited) != 0;
}

nt::Acl HandedDownTo(const nt::SecurityDescriptor& descriptor, nt::ObjectKind kind, const nt::Acl& above) {
    return nt::InheritedEntries(above, kind, descriptor.owner.value_or(nt::Sid()),
                                descriptor.group.value_or(nt::Sid()));
}

}  // namespace permora
