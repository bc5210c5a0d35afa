#include "platform/stored_security.h"

#include <utility>

namespace permora {

DWORD DescriptorIn(const StoredSecurity& stored, std::optional<nt::SecurityDescriptor>& descriptor) {
    std::optional<nt::SecurityDescriptor> parsed;
    if (stored.form == SecurityForm::kVolume || stored.form == SecurityForm::kShare)
        parsed = nt::SecurityDescriptor::FromBytes(stored.bytes);
    if (!parsed && stored.form != SecurityForm::kNone) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = std::move(parsed);
    return ERROR_SUCCESS;
}

SystemList SystemListIn(const StoredSecurity& /*stored*/) {
    return SystemList::kLeftOut;
}

}  // namespace permora
