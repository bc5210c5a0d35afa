// What a list becomes whose faults are mended.
#pragma once

#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"

namespace permora {

// The same entries: those of the object's own that deny, those that allow or do neither, then the inherited
// ones. Within these groups they keep their order.
nt::Acl InUsualOrder(nt::Acl list);

// `object`, which has a list, with its entries in the usual order and, unless it is protected, with what
// `above`, the folder's descriptor, hands down now. Without `above` it keeps its inherited entries.
nt::SecurityDescriptor Repaired(nt::SecurityDescriptor object, const nt::SecurityDescriptor* above,
                                nt::ObjectKind kind);

}  // namespace permora
