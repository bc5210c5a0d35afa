// Descriptors as typed text: an accepted text means exactly one descriptor.
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/require.h"
#include "platform/nt/sddl.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora;
    constexpr std::uint32_t kAllParts = 15;
    const nt::Sid machine(5, {21, 1, 2, 3});

    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto descriptor = nt::FromSddl(input, nt::SddlAccounts(machine));
    if (!descriptor) return 0;
    const auto text = nt::ToSddl(*descriptor, kAllParts);
    Require(text.has_value(), "what was read from text can be written as text");
    Require(nt::FromSddl(*text) == descriptor,
            "text that was written means the same, without the machine too");

    std::vector<std::uint8_t> bytes;
    Require(descriptor->AppendTo(bytes), "what was read from text has a binary form");
    Require(nt::SecurityDescriptor::FromBytes(bytes) == descriptor, "the binary form reads the same");
    return 0;
}
