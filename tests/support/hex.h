// Bytes written as hexadecimal text, so that golden data reads like a dump.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace permora {

// The bytes of `text`; blanks and line breaks between digits are for the reader.
inline std::vector<std::uint8_t> Hex(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    bool isSecondDigit = false;
    for (const char c : text) {
        if (c == ' ' || c == '\n') continue;
        const unsigned digit =
            c <= '9' ? static_cast<unsigned>(c - '0') : static_cast<unsigned>(c - 'a' + 10);
        if (isSecondDigit)
            bytes.back() = static_cast<std::uint8_t>(unsigned{bytes.back()} << 4U | digit);
        else
            bytes.push_back(static_cast<std::uint8_t>(digit));
        isSecondDigit = !isSecondDigit;
    }
    return bytes;
}

}  // namespace permora
