#include "platform/nt/guid_text.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace permora::nt {
namespace {

// The stored byte of each pair of hexadecimal digits: the first three groups of a GUID are little-endian
// numbers, the rest are bytes.
constexpr std::array<std::size_t, 16> kGuidByteOrder = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

constexpr std::size_t kGuidTextSize = 36;

bool IsDashBefore(std::size_t pair) {
    return pair == 4 || pair == 6 || pair == 8 || pair == 10;
}

}  // namespace

void AppendGuid(const Guid& guid, std::string& text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    for (std::size_t pair = 0; pair < kGuidByteOrder.size(); ++pair) {
        if (IsDashBefore(pair)) text += '-';
        const unsigned byte = guid[kGuidByteOrder[pair]];
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xFU];
    }
}

std::optional<Guid> GuidFromText(std::string_view text) {
    if (text.size() != kGuidTextSize) return std::nullopt;
    Guid guid{};
    for (std::size_t pair = 0; pair < kGuidByteOrder.size(); ++pair) {
        if (IsDashBefore(pair)) {
            if (text.front() != '-') return std::nullopt;
            text.remove_prefix(1);
        }
        const auto [next, error] =
            std::from_chars(text.data(), text.data() + 2, guid[kGuidByteOrder[pair]], 16);
        if (error != std::errc() || next != text.data() + 2) return std::nullopt;
        text.remove_prefix(2);
    }
    return guid;
}

}  // namespace permora::nt
