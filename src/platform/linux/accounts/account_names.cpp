#include "platform/linux/accounts/account_names.h"

#include <algorithm>

#include "platform/api/text.h"

namespace permora::host {

namespace {

// More than any name service hands out.
constexpr std::size_t kLongestName = 1024;

char LowerLetter(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

char UpperLetter(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool IsUtf8(std::string_view text) {
    // What is not well formed turns into replacement characters and comes back different.
    std::u16string wide(text.size(), u'\0');
    const int units = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                                          static_cast<int>(wide.size()));
    std::string back(3 * text.size(), '\0');
    const int bytes = WideCharToMultiByte(CP_ACP, 0, wide.data(), units, back.data(),
                                          static_cast<int>(back.size()), nullptr, nullptr);
    return text == std::string_view(back).substr(0, static_cast<std::size_t>(bytes));
}

}  // namespace

bool IsPlainAccountName(std::string_view name) {
    if (name.empty() || name.size() > kLongestName) return false;
    const auto isForbidden = [](unsigned char byte) { return byte < 0x20 || byte == 0x7F || byte == '\\'; };
    return std::none_of(name.begin(), name.end(), isForbidden) && IsUtf8(name);
}

bool IsSameName(std::string_view one, std::string_view other, LetterCase letterCase) {
    if (letterCase == LetterCase::kSignificant) return one == other;
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char left, char right) { return LowerLetter(left) == LowerLetter(right); });
}

std::string InLowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerLetter);
    return lower;
}

std::string InUpperCase(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), UpperLetter);
    return upper;
}

}  // namespace permora::host
