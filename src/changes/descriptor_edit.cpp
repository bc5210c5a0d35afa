#include "changes/descriptor_edit.h"

namespace permora {

nt::Acl HandedDownTo(const nt::SecurityDescriptor& descriptor, nt::ObjectKind kind, const nt::Acl& above) {
    return nt::InheritedEntries(above, kind, descriptor.owner.value_or(nt::Sid()),
                                descriptor.group.value_or(nt::Sid()));
}

}  // namespace permora
