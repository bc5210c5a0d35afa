// Reading UTF-8 that may be anything.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace permora {

struct Utf8Character {
    char32_t codePoint;  // 0 when malformed
    // Bytes of the text that it takes, at least 1. Of malformed text, the longest beginning that could still
    // have become a character: what the Unicode Standard, section 3.9, has replaced by one U+FFFD.
    std::size_t bytes;
    bool isWellFormed;
};

// The character at the start of `text`, which is not empty.
Utf8Character FirstUtf8Character(std::string_view text);

// Adds a character to a text. `character` is no surrogate.
void AppendUtf8(char32_t character, std::string& text);

// Whether a character cannot be seen, and turns the text around it, joins or splits it, or ends a line.
bool IsUnseenCharacter(char32_t character);

}  // namespace permora
