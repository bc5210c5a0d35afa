#include "platform/utf8.h"

#include <algorithm>
#include <array>

namespace permora {
namespace {

// The shape of a UTF-8 sequence that its first byte announces. Source: the Unicode Standard, table 3-7
// "Well-Formed UTF-8 Byte Sequences": only the second byte's range depends on the first.
struct SequenceShape {
    std::size_t length;  // 0: no sequence starts with this byte
    unsigned char secondFrom;
    unsigned char secondTo;
};

SequenceShape ShapeOf(unsigned char first) {
    if (first < 0x80) return {1, 0, 0};
    if (first < 0xC2) return {0, 0, 0};
    if (first < 0xE0) return {2, 0x80, 0xBF};
    if (first == 0xE0) return {3, 0xA0, 0xBF};  // shorter forms of the same code point are not text
    if (first == 0xED) return {3, 0x80, 0x9F};  // surrogates are not text
    if (first < 0xF0) return {3, 0x80, 0xBF};
    if (first == 0xF0) return {4, 0x90, 0xBF};
    if (first < 0xF4) return {4, 0x80, 0xBF};
    if (first == 0xF4) return {4, 0x80, 0x8F};  // nothing beyond U+10FFFF
    return {0, 0, 0};
}

struct CharacterRange {
    char32_t first;
    char32_t last;
};

// Invisible characters that reverse the text around them, join or split it, or end a line. The Unicode
// Character Database's general category Cf, and the two separators Zl and Zp.
constexpr std::array<CharacterRange, 9> kUnseenCharacters = {{
    {0x00AD, 0x00AD},
    {0x061C, 0x061C},
    {0x180E, 0x180E},
    {0x200B, 0x200F},
    {0x2028, 0x202E},
    {0x2060, 0x206F},
    {0xFEFF, 0xFEFF},
    {0xFFF9, 0xFFFB},
    {0xE0000, 0xE007F},
}};

}  // namespace

bool IsUnseenCharacter(char32_t character) {
    return std::any_of(kUnseenCharacters.begin(), kUnseenCharacters.end(), [character](CharacterRange range) {
        return character >= range.first && character <= range.last;
    });
}

Utf8Character FirstUtf8Character(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const SequenceShape shape = ShapeOf(first);
    if (shape.length == 0) return {0, 1, false};
    if (shape.length == 1) return {first, 1, true};
    char32_t codePoint = first & (0x7FU >> shape.length);
    for (std::size_t i = 1; i < shape.length; ++i) {
        if (i == text.size()) return {0, i, false};
        const auto byte = static_cast<unsigned char>(text[i]);
        const unsigned char from = i == 1 ? shape.secondFrom : 0x80;
        const unsigned char to = i == 1 ? shape.secondTo : 0xBF;
        if (byte < from || byte > to) return {0, i, false};
        codePoint = (codePoint << 6) | (byte & 0x3FU);
    }
    return {codePoint, shape.length, true};
}

void AppendUtf8(char32_t character, std::string& text) {
    const auto continuation = [&](unsigned shift) {
        text += static_cast<char>(0x80 | ((character >> shift) & 0x3F));
    };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | (character >> 6));
        continuation(0);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | (character >> 12));
        continuation(6);
        continuation(0);
    } else {
        text += static_cast<char>(0xF0 | (character >> 18));
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

}  // namespace permora
