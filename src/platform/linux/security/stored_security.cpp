#include "platform/stored_security.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "platform/linux/security/samba_attribute.h"
#include "platform/nt/byte_io.h"

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
    // The flag may only say that the system access list was read (SystemListIn).
    if (parsed->saclBytes.empty()) parsed->control &= static_cast<std::uint16_t>(~nt::kSaclPresent);
    descriptor = std::move(parsed);
    return ERROR_SUCCESS;
}

SystemList SystemListIn(const StoredSecurity& stored) {
    constexpr std::size_t kControl = 2;  // of the self-relative form
    const unsigned control = nt::ReadU16(stored.bytes, kControl).value_or(0);
    const bool isIncluded = stored.form == SecurityForm::kVolume && (control & nt::kSaclPresent) != 0;
    return isIncluded ? SystemList::kIncluded : SystemList::kLeftOut;
}

}  // namespace permora
