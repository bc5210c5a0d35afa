#include "saved/utf16.h"

#include "platform/utf8.h"

namespace permora {
namespace {

constexpr std::size_t kUnitBytes = 2;
constexpr char32_t kFirstHigh = 0xD800;
constexpr char32_t kFirstLow = 0xDC00;
constexpr char32_t kBehindLow = 0xE000;
constexpr char32_t kFirstPair = 0x10000;

char32_t UnitAt(std::string_view bytes, std::size_t position) {
    return static_cast<unsigned char>(bytes[position]) |
           static_cast<char32_t>(static_cast<unsigned char>(bytes[position + 1])) << 8;
}

void AppendUnit(char32_t unit, std::string& bytes) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
}

}  // namespace

std::optional<std::string> Utf8FromUtf16(std::string_view bytes) {
    if (bytes.size() % kUnitBytes != 0) return std::nullopt;
    std::string text;
    text.reserve(bytes.size() / kUnitBytes);
    for (std::size_t position = 0; position < bytes.size(); position += kUnitBytes) {
        char32_t character = UnitAt(bytes, position);
        if (character >= kFirstLow && character < kBehindLow) return std::nullopt;
        if (character >= kFirstHigh && character < kFirstLow) {
            position += kUnitBytes;
            const char32_t low = position < bytes.size() ? UnitAt(bytes, position) : 0;
            if (low < kFirstLow || low >= kBehindLow) return std::nullopt;
            character = kFirstPair + ((character - kFirstHigh) << 10) + (low - kFirstLow);
        }
        AppendUtf8(character, text);
    }
    return text;
}

bool AppendUtf16(std::string_view text, std::string& bytes) {
    while (!text.empty()) {
        const Utf8Character next = FirstUtf8Character(text);
        if (!next.isWellFormed) return false;
        if (next.codePoint < kFirstPair) {
            AppendUnit(next.codePoint, bytes);
        } else {
            AppendUnit(kFirstHigh + ((next.codePoint - kFirstPair) >> 10), bytes);
            AppendUnit(kFirstLow + ((next.codePoint - kFirstPair) & 0x3FF), bytes);
        }
        text.remove_prefix(next.bytes);
    }
    return true;
}

}  // namespace permora
