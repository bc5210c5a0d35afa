// Access lists of real objects as text, through the system's own services.
#pragma once

#include <string>

#include "platform/api/security.h"
#include "platform/held_object.h"
#include "platform/nt/security_descriptor.h"
#include "platform/resources.h"

namespace permora::test {

// Parts of the descriptor of the object at an absolute host path as SDDL, or "error 1338".
std::string DescriptorText(const std::string& hostPath, SECURITY_INFORMATION parts);

// Only the list: "D:AI(A;;FA;;;WD)".
std::string DaclText(const std::string& hostPath);

// Sets the parts that `sddl` has, and protects the DACL when `sddl` says so ("D:P(...)"), else unprotects it.
// A system error code, that of the first failure below the object too; ERROR_INVALID_PARAMETER when the text
// is wrong.
DWORD SetDescriptorText(const std::string& hostPath, const std::string& sddl);

// The same with a descriptor that need not have a text form.
DWORD SetDescriptor(const std::string& hostPath, const nt::SecurityDescriptor& descriptor);

// The object at an absolute host path, held; none when it cannot be found.
HeldObject Held(const std::string& hostPath);

// The descriptor of `sddl` in the form of the services; null when the text is wrong.
UniqueLocal<void> DescriptorOf(const std::string& sddl);

// Its list, which lives as long as the descriptor; null where it has none.
PACL ListOf(const UniqueLocal<void>& descriptor);

// Parts of a descriptor as SDDL; "none" without one.
std::string SddlOfParts(PSECURITY_DESCRIPTOR descriptor, SECURITY_INFORMATION parts);

}  // namespace permora::test
