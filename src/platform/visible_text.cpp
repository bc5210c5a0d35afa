#include "platform/visible_text.h"

#include <array>
#include <cstdio>

#include "platform/utf8.h"

namespace permora {
namespace {

bool IsControl(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

bool IsPrivateUse(char32_t character) {
    return (character >= 0xE000 && character <= 0xF8FF) || character >= 0xF0000;
}

bool IsNoCharacter(char32_t character) {
    return (character & 0xFFFE) == 0xFFFE || (character >= 0xFDD0 && character <= 0xFDEF);
}

std::string InHex(unsigned value) {
    std::array<char, 16> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%x", value);
    return buffer.data();
}

}  // namespace

std::string VisibleText(std::string_view text) {
    std::string visible;
    visible.reserve(text.size());
    while (!text.empty()) {
        const Utf8Character next = FirstUtf8Character(text);
        if (!next.isWellFormed) {
            visible += "\\x" + InHex(static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
            continue;
        }
        const char32_t character = next.codePoint;
        if (IsControl(character) || IsUnseenCharacter(character) || IsPrivateUse(character) ||
            IsNoCharacter(character))
            visible += "\\u{" + InHex(character) + '}';
        else
            visible += text.substr(0, next.bytes);
        text.remove_prefix(next.bytes);
    }
    return visible;
}

}  // namespace permora
