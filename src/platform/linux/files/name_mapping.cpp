#include "platform/linux/files/name_mapping.h"

#include <algorithm>
#include <array>
#include <utility>

namespace permora::host {
namespace {

// A byte b is shown as the code point kEscapeBase + b. Other programs that show host names to Windows use the
// same block of the private-use area.
constexpr char32_t kEscapeBase = 0xF000;

constexpr bool IsEscape(char32_t codePoint) {
    return codePoint > kEscapeBase && codePoint <= kEscapeBase + 0xFF;
}

struct CodePoint {
    char32_t value;
    std::size_t length;  // bytes; 0 when the text does not start with well-formed UTF-8
};

constexpr CodePoint kMalformed{0, 0};

// The code point at the start of `text`, which is not empty.
CodePoint FirstCodePoint(std::string_view text) {
    const auto byteAt = [text](std::size_t i) -> char32_t { return static_cast<unsigned char>(text[i]); };
    constexpr std::array<char32_t, 5> kLeastOfLength{0, 0, 0x80, 0x800, 0x10000};
    const char32_t first = byteAt(0);
    if (first < 0x80) return {first, 1};
    if (first < 0xC0 || first > 0xF7) return kMalformed;
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (text.size() < length) return kMalformed;
    char32_t value = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80) return kMalformed;
        value = value << 6 | (byteAt(i) & 0x3F);
    }
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < kLeastOfLength.at(length) || value > 0x10FFFF || isSurrogate) return kMalformed;
    return {value, length};
}

// Whether the code point stands for itself in a shown name, its place apart.
bool IsPlain(char32_t codePoint) {
    constexpr std::u32string_view kReserved = U"\\:*?\"<>|";
    const bool isControl = codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
    return !isControl && !IsEscape(codePoint) && kReserved.find(codePoint) == kReserved.npos;
}

void AppendEscaped(std::string_view bytes, std::string& name) {
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        // U+F000 to U+F0FF in UTF-8: EF 80 80 to EF 83 BF.
        name += '\xEF';
        name += static_cast<char>(0x80 | byte >> 6);
        name += static_cast<char>(0x80 | (byte & 0x3F));
    }
}

// What the escapes of `name` stand for; false when it is not UTF-8.
bool Unescape(std::string_view name, std::string& bytes) {
    for (std::size_t position = 0; position < name.size();) {
        const CodePoint codePoint = FirstCodePoint(name.substr(position));
        if (codePoint.length == 0) return false;
        if (IsEscape(codePoint.value)) {
            bytes += static_cast<char>(codePoint.value - kEscapeBase);
        } else {
            bytes += name.substr(position, codePoint.length);
        }
        position += codePoint.length;
    }
    return true;
}

}  // namespace

std::string EncodeName(std::string_view hostName) {
    std::string name;
    name.reserve(hostName.size());
    for (std::size_t position = 0; position < hostName.size();) {
        const CodePoint codePoint = FirstCodePoint(hostName.substr(position));
        const std::string_view bytes = hostName.substr(position, std::max<std::size_t>(codePoint.length, 1));
        position += bytes.size();
        const bool isLostAtEnd = position == hostName.size() && (bytes == "." || bytes == " ");
        if (codePoint.length == 0 || !IsPlain(codePoint.value) || isLostAtEnd) {
            AppendEscaped(bytes, name);
        } else {
            name += bytes;
        }
    }
    return name;
}

bool DecodeName(std::string_view name, std::string& hostName) {
    std::string decoded;
    if (!Unescape(name, decoded)) return false;
    if (decoded.empty() || decoded == "." || decoded == "..") return false;
    if (decoded.find('/') != decoded.npos || decoded.find('\0') != decoded.npos) return false;
    // Only the one text that this host name shows as may lead to it.
    if (EncodeName(decoded) != name) return false;
    hostName = std::move(decoded);
    return true;
}

}  // namespace permora::host
