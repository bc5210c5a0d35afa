#include "platform/utf8.h"

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

}  // namespace

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

}  // namespace permora
