// Access lists of real objects as text, through the system's own services.
#pragma once

#include <string>

#include "platform/api/security.h"
#include "platform/held_object.h"
#include "platform/nt/security_descriptor.h"
#include "tests/support/descriptor_texts.h"

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

}  // namespace permora::test
