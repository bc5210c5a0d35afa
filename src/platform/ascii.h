// Texts by the characters of ASCII. The case of all other letters is a matter of language.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace permora {

constexpr char LowerLetter(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

constexpr bool IsControl(char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
}

// Takes everything up to the first `delimiter` off `text`, the delimiter too, and hands over what stood
// before it.
inline std::string_view TakeUntil(char delimiter, std::string_view& text) {
    const std::string_view taken = text.substr(0, text.find(delimiter));
    text.remove_prefix(std::min(taken.size() + 1, text.size()));
    return taken;
}

inline std::string_view TakeLine(std::string_view& text) {
    return TakeUntil('\n', text);
}

constexpr bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

// Without the blanks, tabs and carriage returns at both ends.
inline std::string_view WithoutOuterBlanks(std::string_view text) {
    constexpr std::string_view kOuterBlanks = " \t\r";
    text.remove_prefix(std::min(text.find_first_not_of(kOuterBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kOuterBlanks) + 1);
}

inline std::string InLowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerLetter);
    return lower;
}

inline bool EqualsIgnoringCase(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char left, char right) { return LowerLetter(left) == LowerLetter(right); });
}

}  // namespace permora
