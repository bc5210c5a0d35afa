// One way to look at both forms of a security descriptor in memory.
#pragma once

#include <optional>

#include "platform/api/security.h"
#include "platform/nt/security_descriptor.h"

namespace permora::host {

// The header of a descriptor and where its parts stand; null means that it has no such part. A list counts
// only when the control word says that it is there. The parts belong to the descriptor's owner, may be
// unaligned and are not checked.
struct DescriptorView {
    BYTE resourceManagerControl;
    SECURITY_DESCRIPTOR_CONTROL control;
    PSID owner;
    PSID group;
    PACL sacl;
    PACL dacl;

    // Reads the header, in the form that its control word states. Nothing when the descriptor is null, its
    // revision is unknown or an offset leads into the header itself.
    static std::optional<DescriptorView> Of(PSECURITY_DESCRIPTOR descriptor);
};

// The value of a descriptor in either form; nothing when it is not valid.
std::optional<nt::SecurityDescriptor> DescriptorValue(PSECURITY_DESCRIPTOR descriptor);

}  // namespace permora::host
