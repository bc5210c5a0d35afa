#include "platform/linux/accounts/account_names.h"

#include <algorithm>

#include "platform/ascii.h"
#include "platform/linux/base/wide_text.h"

namespace permora::host {

namespace {

// More than any name service hands out.
constexpr std::size_t kLongestAccountName = 1024;

char UpperLetter(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool IsUtf8(std::string_view text) {
    // What is not well formed turns into replacement characters and comes back different.
    return text == ToAnsi(ToWide(text));
}

}  // namespace

bool IsPlainAccountName(std::string_view name) {
    if (name.empty() || name.size() > kLongestAccountName) return false;
    const auto isForbidden = [](char character) { return IsControl(character) || character == '\\'; };
    return std::none_of(name.begin(), name.end(), isForbidden) && IsUtf8(name);
}

bool IsSameName(std::string_view one, std::string_view other, LetterCase letterCase) {
    if (letterCase == LetterCase::kSignificant) return one == other;
    return EqualsIgnoringCase(one, other);
}

std::string InUpperCase(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), UpperLetter);
    return upper;
}

}  // namespace permora::host
