#include "platform/stored_security.h"

#include <span>
#include <utility>

#include "platform/linux/security/samba_attribute.h"

namespace permora {

DWORD DescriptorIn(const StoredSecurity& stored, std::optional<nt::SecurityDescriptor>& descriptor) {
    if (stored.form == SecurityForm::kNone) {
        descriptor.reset();
        return ERROR_SUCCESS;
    }
    std::vector<std::uint8_t> inner;
    std::span<const std::uint8_t> bytes = stored.bytes;
    if (stored.form == SecurityForm::kSamba) {
        if (!host::DescriptorFromSambaAttribute(stored.bytes, inner)) return ERROR_INVALID_SECURITY_DESCR;
        bytes = inner;
    }
    auto parsed = nt::SecurityDescriptor::FromBytes(bytes);
    if (!parsed) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = std::move(parsed);
    return ERROR_SUCCESS;
}

}  // namespace permora
