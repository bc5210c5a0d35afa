// Samba's attribute with bytes that anyone may have written.
#include <cstdint>
#include <span>
#include <vector>

#include "fuzz/require.h"
#include "platform/linux/security/samba_attribute.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> found;
    if (!permora::host::DescriptorFromSambaAttribute(std::span(data, size), found)) return 0;
    std::vector<std::uint8_t> attribute;
    std::vector<std::uint8_t> again;
    permora::host::MakeSambaAttribute(found, attribute);
    const bool isRead = permora::host::DescriptorFromSambaAttribute(attribute, again);
    permora::Require(isRead && again == found, "a descriptor put into an attribute comes out the same");
    return 0;
}
