#include "browser/row_order.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "browser/list_presentation.h"
#include "platform/api/text.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

// Each row's key is made once, since a long list needs many comparisons.
template <class Key>
RowOrder OrderByKey(const std::vector<std::string>& texts, Key (*keyOf)(const std::string&)) {
    std::vector<Key> keys(texts.size());
    std::ranges::transform(texts, keys.begin(), keyOf);
    return [keys = std::move(keys)](std::intptr_t one, std::intptr_t other) {
        return keys[static_cast<std::size_t>(one)] < keys[static_cast<std::size_t>(other)];
    };
}

std::string UpperCased(const std::string& text) {
    std::basic_string<WCHAR> wide;
    AnsiToWide(text, wide);
    CharUpperBuffW(wide.data(), static_cast<DWORD>(wide.size()));
    return WideToAnsi(wide.c_str());
}

// Removes and returns the number at the start of `text`; 0 when there is none.
std::int64_t TakeNumber(const char*& text, const char* end) {
    std::int64_t number = 0;
    text = std::from_chars(text, end, number).ptr;
    return number;
}

std::int64_t LeadingNumber(const std::string& text) {
    const char* start = text.data();
    return TakeNumber(start, text.data() + text.size());
}

std::int64_t MinutesOf(const std::string& modifiedText) {
    const char* text = modifiedText.data();
    const char* const end = text + modifiedText.size();
    std::array<std::int64_t, 5> numbers{};
    for (std::int64_t& number : numbers) {
        while (text != end && (*text == ':' || *text == ' '))
            ++text;
        number = TakeNumber(text, end);
    }
    const auto& [day, month, year, minute, hour] = numbers;
    return (((year * 12 + month) * 30 + day) * 24 + hour) * 60 + minute;
}

}  // namespace

RowOrder OrderByColumn(int column, const std::vector<std::string>& texts) {
    switch (column) {
        case kSizeColumn:
            return OrderByKey(texts, LeadingNumber);
        case kModifiedColumn:
            return OrderByKey(texts, MinutesOf);
        default:
            return OrderByKey(texts, UpperCased);
    }
}

}  // namespace permora
