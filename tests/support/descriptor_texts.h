// Descriptors in the form of the system's services, from text and back. For both systems.
#pragma once

#include <string>

#include "platform/api/security.h"
#include "platform/resources.h"

namespace permora::test {

// The descriptor of `sddl` in the form of the services; null when the text is wrong.
UniqueLocal<void> DescriptorOf(const std::string& sddl);

// Its list, which lives as long as the descriptor; null where it has none.
PACL ListOf(const UniqueLocal<void>& descriptor);

// Parts of a descriptor as SDDL; "none" without one.
std::string SddlOfParts(PSECURITY_DESCRIPTOR descriptor, SECURITY_INFORMATION parts);

}  // namespace permora::test
