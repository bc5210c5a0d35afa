#include "platform/nt/claim_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <system_error>

#include "platform/ascii.h"
#include "platform/nt/byte_io.h"
#include "platform/utf8.h"

namespace permora::nt {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::size_t kEscapeDigits = 4;

constexpr bool IsBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

// Whether a character is written unchanged in a name.
bool IsNameCharacter(char16_t unit, NameForm form, bool isFirst) {
    if (unit >= 0x80) return false;
    const char character = static_cast<char>(unit);
    const char letter = LowerLetter(character);
    if ((letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9')) return true;
    constexpr std::string_view kSimple = ":./_";
    constexpr std::string_view kExtended = "#$'*+-;?@[\\]^`{}~";
    if (kSimple.find(character) != kSimple.npos) return true;
    if (form == NameForm::kExtended) return kExtended.find(character) != kExtended.npos;
    return character == '@' && !isFirst;
}

void AppendEscape(char16_t unit, std::string& text) {
    text += '%';
    for (unsigned shift = 16; shift > 0; shift -= 4)
        text += kHexDigits[unsigned{unit} >> (shift - 4) & 0xFU];
}

bool TakeEscape(std::string_view& text, std::uint16_t& unit) {
    const std::string_view digits = text.substr(1, kEscapeDigits);
    const char* const end = digits.data() + digits.size();
    const auto [next, error] = std::from_chars(digits.data(), end, unit, 16);
    if (digits.size() != kEscapeDigits || error != std::errc() || next != end) return false;
    text.remove_prefix(1 + kEscapeDigits);
    return true;
}

void AppendUtf16(char32_t codePoint, std::vector<std::uint8_t>& stored) {
    constexpr char32_t kFirstBeyond = 0x10000;
    if (codePoint < kFirstBeyond) {
        AppendU16(stored, static_cast<std::uint16_t>(codePoint));
        return;
    }
    codePoint -= kFirstBeyond;
    AppendU16(stored, static_cast<std::uint16_t>(0xD800U | codePoint >> 10U));
    AppendU16(stored, static_cast<std::uint16_t>(0xDC00U | (codePoint & 0x3FFU)));
}

// Moves the first character of `text`, which is not empty, to `stored`; false unless it is UTF-8.
bool TakeUtf8(std::string_view& text, std::vector<std::uint8_t>& stored) {
    const Utf8Character character = FirstUtf8Character(text);
    if (!character.isWellFormed) return false;
    text.remove_prefix(character.bytes);
    AppendUtf16(character.codePoint, stored);
    return true;
}

void AppendUtf8(char32_t codePoint, std::string& text) {
    const auto append = [&text](char32_t bits) { text += static_cast<char>(bits); };
    const auto appendRest = [&append](char32_t bits) { append(0x80U | (bits & 0x3FU)); };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0U | codePoint >> 6U);
        appendRest(codePoint);
    } else if (codePoint < 0x10000) {
        append(0xE0U | codePoint >> 12U);
        appendRest(codePoint >> 6U);
        appendRest(codePoint);
    } else {
        append(0xF0U | codePoint >> 18U);
        appendRest(codePoint >> 12U);
        appendRest(codePoint >> 6U);
        appendRest(codePoint);
    }
}

// The character at `offset`, which then moves past it; nothing for half a surrogate pair or half a unit.
std::optional<char32_t> CharacterAt(std::span<const std::uint8_t> stored, std::size_t& offset) {
    const auto first = ReadU16(stored, offset);
    if (!first) return std::nullopt;
    offset += 2;
    if (*first < 0xD800 || *first > 0xDFFF) return *first;
    const auto second = ReadU16(stored, offset);
    if (*first > 0xDBFF || !second || *second < 0xDC00 || *second > 0xDFFF) return std::nullopt;
    offset += 2;
    return 0x10000U + ((*first & 0x3FFU) << 10U | (*second & 0x3FFU));
}

std::optional<unsigned> OctetDigit(char character) {
    if (character == '#') return 0;
    const std::size_t digit = kHexDigits.find(LowerLetter(character));
    if (digit == kHexDigits.npos) return std::nullopt;
    return static_cast<unsigned>(digit);
}

NumberSign TakeSign(std::string_view& text) {
    if (TakeCharacter('+', text)) return NumberSign::kPlus;
    if (TakeCharacter('-', text)) return NumberSign::kMinus;
    return NumberSign::kNone;
}

// A lone 0 is decimal.
NumberBase TakeBase(std::string_view& text) {
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        return NumberBase::kHexadecimal;
    }
    if (text.size() < 2 || text[0] != '0' || text[1] < '0' || text[1] > '9') return NumberBase::kDecimal;
    text.remove_prefix(1);
    return NumberBase::kOctal;
}

int RadixOf(NumberBase base) {
    switch (base) {
        case NumberBase::kOctal:
            return 8;
        case NumberBase::kHexadecimal:
            return 16;
        case NumberBase::kDecimal:
            break;
    }
    return 10;
}

constexpr std::uint64_t kGreatest = std::numeric_limits<std::int64_t>::max();

// The greatest magnitude that can be written with this sign in this base.
std::uint64_t LimitOf(NumberSign sign, NumberBase base) {
    if (sign == NumberSign::kMinus) return kGreatest + 1;
    if (sign == NumberSign::kNone && base != NumberBase::kDecimal)
        return std::numeric_limits<std::uint64_t>::max();
    return kGreatest;
}

}  // namespace

void SkipBlanks(std::string_view& text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
}

bool TakeCharacter(char character, std::string_view& text) {
    if (!text.starts_with(character)) return false;
    text.remove_prefix(1);
    return true;
}

bool AppendName(std::span<const std::uint8_t> stored, NameForm form, std::string& text) {
    if (stored.empty() || stored.size() % 2 != 0) return false;
    for (std::size_t offset = 0; offset < stored.size(); offset += 2) {
        const char16_t unit = ReadU16(stored, offset).value_or(0);
        if (unit == 0) return false;
        if (IsNameCharacter(unit, form, offset == 0))
            text += static_cast<char>(unit);
        else
            AppendEscape(unit, text);
    }
    return true;
}

bool TakeName(NameForm form, std::string_view& text, std::vector<std::uint8_t>& stored) {
    stored.clear();
    while (!text.empty()) {
        const char next = text.front();
        if (next == '%') {
            std::uint16_t unit = 0;
            if (!TakeEscape(text, unit) || unit == 0) return false;
            AppendU16(stored, unit);
        } else if ((static_cast<unsigned char>(next) & 0x80U) != 0) {
            if (!TakeUtf8(text, stored)) return false;
        } else if (IsNameCharacter(static_cast<char16_t>(next), form, stored.empty())) {
            AppendU16(stored, static_cast<std::uint16_t>(next));
            text.remove_prefix(1);
        } else {
            break;
        }
    }
    return !stored.empty();
}

bool AppendQuoted(std::span<const std::uint8_t> stored, std::string& text) {
    text += '"';
    for (std::size_t offset = 0; offset < stored.size();) {
        const auto character = CharacterAt(stored, offset);
        if (!character || *character == U'"' || *character == 0) return false;
        AppendUtf8(*character, text);
    }
    text += '"';
    return true;
}

bool TakeQuoted(std::string_view& text, std::vector<std::uint8_t>& stored) {
    stored.clear();
    if (!TakeCharacter('"', text)) return false;
    while (!text.empty() && text.front() != '"')
        if (text.front() == '\0' || !TakeUtf8(text, stored)) return false;
    return TakeCharacter('"', text);
}

void AppendOctets(std::span<const std::uint8_t> octets, std::string& text) {
    text += '#';
    for (const unsigned octet : octets) {
        text += kHexDigits[octet >> 4U];
        text += kHexDigits[octet & 0xFU];
    }
}

bool TakeOctets(std::string_view& text, std::vector<std::uint8_t>& octets) {
    octets.clear();
    if (!text.starts_with('#')) return false;
    const auto end =
        std::find_if_not(text.begin(), text.end(), [](char digit) { return OctetDigit(digit).has_value(); });
    std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    if (digits.size() % 2 != 0) digits.remove_prefix(1);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const unsigned octet = *OctetDigit(digits[i]) << 4U | *OctetDigit(digits[i + 1]);
        octets.push_back(static_cast<std::uint8_t>(octet));
    }
    return true;
}

bool AppendNumber(const SignedNumber& number, std::string& text) {
    const bool isMinus = number.sign == NumberSign::kMinus;
    const std::uint64_t magnitude = isMinus ? 0 - number.bits : number.bits;
    if (magnitude > LimitOf(number.sign, number.base)) return false;
    if (isMinus) text += '-';
    if (number.sign == NumberSign::kPlus) text += '+';
    if (number.base == NumberBase::kHexadecimal) text += "0x";
    if (number.base == NumberBase::kOctal) text += '0';
    std::array<char, 24> digits{};  // 22 of base 8
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), magnitude, RadixOf(number.base)).ptr;
    text.append(digits.data(), end);
    return true;
}

bool TakeNumber(std::string_view& text, SignedNumber& number) {
    number.sign = TakeSign(text);
    number.base = TakeBase(text);
    std::uint64_t magnitude = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, magnitude, RadixOf(number.base));
    if (error != std::errc() || magnitude > LimitOf(number.sign, number.base)) return false;
    text.remove_prefix(static_cast<std::size_t>(next - text.data()));
    number.bits = number.sign == NumberSign::kMinus ? 0 - magnitude : magnitude;
    return true;
}

}  // namespace permora::nt
