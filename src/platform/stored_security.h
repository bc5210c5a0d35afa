// What security as it is kept (StoredSecurity) says.
#pragma once

#include <optional>

#include "platform/change_recorder.h"
#include "platform/nt/security_descriptor.h"

namespace permora {

// Takes the descriptor out of the form in which it is kept; nothing where nothing is stored. Returns 0, or
// ERROR_INVALID_SECURITY_DESCR for a damaged one and for a form that this system does not have. `descriptor`
// is replaced only on success.
DWORD DescriptorIn(const StoredSecurity& stored, std::optional<nt::SecurityDescriptor>& descriptor);

// Whether a system access list belongs to what is kept, even if there is none.
SystemList SystemListIn(const StoredSecurity& stored);

}  // namespace permora
