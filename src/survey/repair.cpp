#include "survey/repair.h"

#include <algorithm>

#include "platform/nt/ace_bits.h"
#include "platform/security_change.h"

namespace permora {

nt::Acl InUsualOrder(nt::Acl list) {
    const auto groupOf = [](const nt::Ace& entry) {
        if ((entry.flags & nt::kInherited) != 0) return 2;
        return nt::IsDenyType(entry.type) ? 0 : 1;
    };
    std::ranges::stable_sort(list.entries, {}, groupOf);
    return list;
}

nt::SecurityDescriptor Repaired(nt::SecurityDescriptor object, const nt::SecurityDescriptor* above,
                                nt::ObjectKind kind) {
    object.dacl = InUsualOrder(std::move(object.dacl));
    if (above != nullptr && !object.IsDaclProtected())
        JoinInherited(object, ListOf(*above), kind, nt::Sid(), nt::Sid());
    return object;
}

}  // namespace permora
