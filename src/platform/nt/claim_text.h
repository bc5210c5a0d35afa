// The smallest pieces of the text forms that conditions and resource attributes share. Grammar: [MS-DTYP]
// 2.5.1.1. Text is UTF-8, and stored strings are UTF-16, least significant byte first.
//
// Every Take function removes its piece from the front of `text`. On false, there is another piece, and
// `text` and the output are unspecified. Every Append function is false when text cannot express the piece.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace permora::nt {

void SkipBlanks(std::string_view& text);
bool TakeCharacter(char character, std::string_view& text);

// The names of attributes. Other characters are escaped as "%" and the four digits of the UTF-16 unit.
enum class NameForm {
    kSimple,  // of a local attribute: letters, digits and ":./_" are not escaped, nor is "@" after the first
    kExtended,  // after "@User." or in quotation marks: most punctuation is not escaped either
};
[[nodiscard]] bool AppendName(std::span<const std::uint8_t> stored, NameForm form, std::string& text);
[[nodiscard]] bool TakeName(NameForm form, std::string_view& text, std::vector<std::uint8_t>& stored);

// A string in quotation marks, which no string can hold itself: there are no escapes in it.
[[nodiscard]] bool AppendQuoted(std::span<const std::uint8_t> stored, std::string& text);
[[nodiscard]] bool TakeQuoted(std::string_view& text, std::vector<std::uint8_t>& stored);

// Bytes behind a "#". When they are read, further "#" mean the digit 0, and so does the first when the number
// of digits is odd.
void AppendOctets(std::span<const std::uint8_t> octets, std::string& text);
[[nodiscard]] bool TakeOctets(std::string_view& text, std::vector<std::uint8_t>& octets);

// Numbers keep how they were written. The values are those of the stored form, [MS-DTYP] 2.4.4.17.5.
enum class NumberSign : std::uint8_t { kPlus = 1, kMinus = 2, kNone = 3 };
enum class NumberBase : std::uint8_t { kOctal = 1, kDecimal = 2, kHexadecimal = 3 };
struct SignedNumber {
    std::uint64_t bits = 0;  // two's complement
    NumberSign sign = NumberSign::kNone;
    NumberBase base = NumberBase::kDecimal;
};
// False for a sign that contradicts the value. Without a sign, octal and hexadecimal numbers have none, so
// that they reach to 64 bits; decimal ones are not negative.
[[nodiscard]] bool AppendNumber(const SignedNumber& number, std::string& text);
[[nodiscard]] bool TakeNumber(std::string_view& text, SignedNumber& number);

}  // namespace permora::nt
