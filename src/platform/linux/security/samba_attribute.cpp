#include "platform/linux/security/samba_attribute.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#include "platform/nt/byte_io.h"

namespace permora::host {

namespace {

constexpr std::size_t kVersionAndPointer = 8;
constexpr std::size_t kSecondPointer = 4;
constexpr std::size_t kVersion2Hash = 16;
constexpr std::size_t kTypedHash = 2 + 64;
constexpr std::size_t kTime = 8;
constexpr std::size_t kSecondHash = 64;
constexpr std::uint16_t kVersionWritten = 1;
// Any number but 0 marks a pointer that is not null. Samba begins with this one.
constexpr std::uint32_t kPointer = 0x00020000;

constexpr std::size_t kDescriptorHeader = 20;
// The position of the header's four offsets: owner, group, SACL, DACL.
constexpr std::array<std::size_t, 4> kOffsetPlaces = {4, 8, 12, 16};

// The start of the descriptor in version 4: after the description, whose length the writer chose.
std::optional<std::size_t> StartInVersion4(std::span<const std::uint8_t> attribute) {
    constexpr std::size_t kDescription = kVersionAndPointer + kSecondPointer + kTypedHash;
    if (attribute.size() < kDescription) return std::nullopt;
    const auto text = attribute.subspan(kDescription);
    const auto terminator = std::find(text.begin(), text.end(), std::uint8_t{0});
    if (terminator == text.end()) return std::nullopt;
    const auto length = static_cast<std::size_t>(terminator - text.begin()) + 1;
    return nt::RoundUpToFour(kDescription + length) + kTime + kSecondHash;
}

// The start of the descriptor, perhaps beyond the end of the attribute.
std::optional<std::size_t> DescriptorStart(std::span<const std::uint8_t> attribute) {
    const auto version = nt::ReadU16(attribute, 0);
    const auto pointer = nt::ReadU32(attribute, 4);
    if (!version || nt::ReadU16(attribute, 2) != version || !pointer || *pointer == 0) return std::nullopt;
    if (*version == 1) return kVersionAndPointer;
    const auto secondPointer = nt::ReadU32(attribute, kVersionAndPointer);
    if (!secondPointer || *secondPointer == 0) return std::nullopt;
    switch (*version) {
        case 2:
            return kVersionAndPointer + kSecondPointer + kVersion2Hash;
        case 3:
            return nt::RoundUpToFour(kVersionAndPointer + kSecondPointer + kTypedHash);
        case 4:
            return StartInVersion4(attribute);
        default:
            return std::nullopt;
    }
}

std::array<std::uint8_t, 4> OffsetBytes(std::uint32_t offset) {
    return {static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(offset >> 8U),
            static_cast<std::uint8_t>(offset >> 16U), static_cast<std::uint8_t>(offset >> 24U)};
}

}  // namespace

bool DescriptorFromSambaAttribute(std::span<const std::uint8_t> attribute,
                                  std::vector<std::uint8_t>& descriptor) {
    const auto start = DescriptorStart(attribute);
    if (!start || !nt::Slice(attribute, *start, kDescriptorHeader)) return false;
    const auto inside = attribute.subspan(*start);
    std::array<std::uint32_t, kOffsetPlaces.size()> offsets{};
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        const std::uint32_t offset = nt::ReadU32(inside, kOffsetPlaces[i]).value_or(0);
        if (offset == 0) continue;
        if (offset < *start + kDescriptorHeader) return false;
        offsets[i] = offset - static_cast<std::uint32_t>(*start);
    }
    descriptor.assign(inside.begin(), inside.end());
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        std::ranges::copy(OffsetBytes(offsets[i]),
                          descriptor.begin() + static_cast<std::ptrdiff_t>(kOffsetPlaces[i]));
    }
    return true;
}

void MakeSambaAttribute(std::span<const std::uint8_t> descriptor, std::vector<std::uint8_t>& attribute) {
    attribute.clear();
    nt::AppendU16(attribute, kVersionWritten);
    nt::AppendU16(attribute, kVersionWritten);
    nt::AppendU32(attribute, kPointer);
    nt::AppendBytes(attribute, descriptor);
    for (const std::size_t place : kOffsetPlaces) {
        const std::uint32_t offset = nt::ReadU32(descriptor, place).value_or(0);
        if (offset == 0) continue;
        std::ranges::copy(OffsetBytes(offset + std::uint32_t{kVersionAndPointer}),
                          attribute.begin() + static_cast<std::ptrdiff_t>(kVersionAndPointer + place));
    }
}

}  // namespace permora::host
