// Little-endian numbers in byte sequences, as every on-disk form of the security types stores them. Reading
// is bounds-checked and needs no alignment, so that it can be pointed at bytes that anyone may have written.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace permora::nt {

// The `size` bytes at `offset`; nothing when they do not lie wholly inside `bytes`.
inline std::optional<std::span<const std::uint8_t>> Slice(std::span<const std::uint8_t> bytes,
                                                          std::size_t offset, std::size_t size) {
    if (offset > bytes.size() || bytes.size() - offset < size) return std::nullopt;
    return bytes.subspan(offset, size);
}

inline std::optional<std::uint16_t> ReadU16(std::span<const std::uint8_t> bytes, std::size_t offset) {
    const auto field = Slice(bytes, offset, 2);
    if (!field) return std::nullopt;
    return static_cast<std::uint16_t>((*field)[0] | (*field)[1] << 8U);
}

inline std::optional<std::uint32_t> ReadU32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    const auto field = Slice(bytes, offset, 4);
    if (!field) return std::nullopt;
    return std::uint32_t{(*field)[0]} | std::uint32_t{(*field)[1]} << 8U | std::uint32_t{(*field)[2]} << 16U |
           std::uint32_t{(*field)[3]} << 24U;
}

inline void AppendBytes(std::vector<std::uint8_t>& bytes, std::span<const std::uint8_t> added) {
    bytes.insert(bytes.end(), added.begin(), added.end());
}

inline void AppendU16(std::vector<std::uint8_t>& bytes, std::uint16_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8U));
}

inline void AppendU32(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
    const std::array<std::uint8_t, 4> field{
        static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8U),
        static_cast<std::uint8_t>(value >> 16U), static_cast<std::uint8_t>(value >> 24U)};
    AppendBytes(bytes, field);
}

// `size` rounded up to the multiple of four on which every part of a descriptor starts.
constexpr std::size_t RoundUpToFour(std::size_t size) {
    return (size + 3U) & ~std::size_t{3};
}

}  // namespace permora::nt
