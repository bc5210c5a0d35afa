#include "platform/linux/files/name_mapping.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/utf8.h"

namespace permora::host {
namespace {

// A byte b is shown as the code point kEscapeBase + b. Other programs that show host names to Windows use the
// same block of the private-use area.
constexpr char32_t kEscapeBase = 0xF000;

constexpr bool IsEscape(char32_t codePoint) {
    return codePoint > kEscapeBase && codePoint <= kEscapeBase + 0xFF;
}

// Whether the code point stands for itself in a shown name, wherever it is in the name.
constexpr bool IsPlain(char32_t codePoint) {
    constexpr std::u32string_view kReserved = U"\\:*?\"<>|";
    const bool isControl = codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
    return !isControl && !IsEscape(codePoint) && kReserved.find(codePoint) == kReserved.npos;
}

// Most names are plain ASCII, which the mapping leaves as it is in both directions. Only the others are
// examined further.
bool IsOrdinary(std::string_view name) {
    constexpr auto kOrdinary = [] {
        std::array<bool, 0x100> table{};
        for (char32_t character = 0; character < 0x7F; ++character)
            table.at(character) = character != U'/' && IsPlain(character);
        return table;
    }();
    if (name.empty() || name.back() == '.' || name.back() == ' ') return false;
    return std::all_of(name.begin(), name.end(), [&kOrdinary](char character) {
        return kOrdinary.at(static_cast<unsigned char>(character));
    });
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

// Replaces the escapes in `name` by the bytes that they stand for. False when it is not UTF-8.
bool Unescape(std::string_view name, std::string& bytes) {
    for (std::size_t position = 0; position < name.size();) {
        const Utf8Character character = FirstUtf8Character(name.substr(position));
        if (!character.isWellFormed) return false;
        if (IsEscape(character.codePoint))
            bytes += static_cast<char>(character.codePoint - kEscapeBase);
        else
            bytes += name.substr(position, character.bytes);
        position += character.bytes;
    }
    return true;
}

}  // namespace

std::string EncodeName(std::string_view hostName) {
    if (IsOrdinary(hostName)) return std::string(hostName);
    std::string name;
    name.reserve(hostName.size());
    for (std::size_t position = 0; position < hostName.size();) {
        const Utf8Character character = FirstUtf8Character(hostName.substr(position));
        const std::string_view bytes = hostName.substr(position, character.bytes);
        position += bytes.size();
        const bool isLostAtEnd = position == hostName.size() && (bytes == "." || bytes == " ");
        if (!character.isWellFormed || !IsPlain(character.codePoint) || isLostAtEnd)
            AppendEscaped(bytes, name);
        else
            name += bytes;
    }
    return name;
}

bool DecodeName(std::string_view name, std::string& hostName) {
    if (IsOrdinary(name)) {
        hostName = name;
        return true;
    }
    std::string decoded;
    if (!Unescape(name, decoded)) return false;
    if (decoded.empty() || decoded == "." || decoded == "..") return false;
    if (decoded.find('/') != decoded.npos || decoded.find('\0') != decoded.npos) return false;
    // Only the text as which this host name is shown may lead to it.
    if (EncodeName(decoded) != name) return false;
    hostName = std::move(decoded);
    return true;
}

}  // namespace permora::host
