#include "saved/base64.h"

#include <algorithm>

namespace permora {
namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kGroupBytes = 3;
constexpr std::size_t kGroupDigits = 4;

}  // namespace

void AppendBase64(std::span<const std::uint8_t> bytes, std::string& text) {
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), kGroupBytes))) {
        const std::size_t count = std::min(bytes.size(), kGroupBytes);
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < kGroupBytes; ++i)
            group = (group << 8) | (i < count ? bytes[i] : 0U);
        for (std::size_t i = 0; i < kGroupDigits; ++i)
            text += i <= count ? kDigits[(group >> (18 - 6 * i)) & 0x3F] : '=';
    }
}

std::optional<std::vector<std::uint8_t>> FromBase64(std::string_view text) {
    if (text.size() % kGroupDigits != 0) return std::nullopt;
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / kGroupDigits * kGroupBytes);
    for (std::size_t position = 0; position < text.size(); position += kGroupDigits) {
        std::uint32_t group = 0;
        for (std::size_t i = position; i < position + kGroupDigits; ++i) {
            const std::size_t digit = i < text.size() - padding ? kDigits.find(text[i]) : 0;
            if (digit == kDigits.npos) return std::nullopt;
            group = (group << 6) | static_cast<std::uint32_t>(digit);
        }
        for (int shift = 16; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<std::uint8_t>(group >> shift));
    }
    // Digits beyond the last byte have one form.
    for (std::size_t i = 0; i < padding; ++i) {
        if (bytes.back() != 0) return std::nullopt;
        bytes.pop_back();
    }
    return bytes;
}

}  // namespace permora
