#include "platform/linux/base/percent_encoding.h"

#include "platform/ascii.h"

namespace permora::host {
namespace {

bool StandsForItself(char character) {
    const char lower = LowerLetter(character);
    const bool isLetter = lower >= 'a' && lower <= 'z';
    const bool isDigit = character >= '0' && character <= '9';
    return isLetter || isDigit || std::string_view("-_.!~*'()/").find(character) != std::string_view::npos;
}

// -1 for other characters.
int DigitOf(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    const char lower = LowerLetter(character);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::string PercentEncoded(std::string_view hostPath) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(hostPath.size());
    for (const char character : hostPath) {
        const auto byte = static_cast<unsigned char>(character);
        if (StandsForItself(character))
            encoded += character;
        else
            encoded += {'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
    }
    return encoded;
}

std::optional<std::string> PercentDecoded(std::string_view encoded) {
    std::string decoded;
    decoded.reserve(encoded.size());
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        if (encoded[i] == ' ' || IsControl(encoded[i])) return std::nullopt;
        if (encoded[i] != '%') {
            decoded += encoded[i];
            continue;
        }
        if (encoded.size() - i < 3) return std::nullopt;
        const int high = DigitOf(encoded[i + 1]);
        const int low = DigitOf(encoded[i + 2]);
        const int byte = high * 16 + low;
        if (high < 0 || low < 0 || byte == '\0' || byte == '/') return std::nullopt;
        decoded += static_cast<char>(byte);
        i += 2;
    }
    return decoded;
}

}  // namespace permora::host
