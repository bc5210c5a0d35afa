#include "cli/history_age.h"

#include <charconv>
#include <ctime>
#include <string_view>

namespace permora {
namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;
constexpr int kMost = 99999;  // hours or days

// A number in the whole text.
std::optional<int> NumberIn(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0 || number > kMost)
        return std::nullopt;
    return number;
}

std::optional<std::int64_t> BeginningOfDay(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
    const std::optional<int> year = NumberIn(text.substr(0, 4));
    const std::optional<int> month = NumberIn(text.substr(5, 2));
    const std::optional<int> day = NumberIn(text.substr(8, 2));
    if (!year || !month || !day || *year < 1970) return std::nullopt;
    std::tm calendar{};
    calendar.tm_year = *year - 1900;
    calendar.tm_mon = *month - 1;
    calendar.tm_mday = *day;
    calendar.tm_isdst = -1;
    const std::tm asked = calendar;
    const std::time_t time = std::mktime(&calendar);
    // The library makes the 2nd of March of the 30th of February.
    const bool isDay = calendar.tm_mon == asked.tm_mon && calendar.tm_mday == asked.tm_mday;
    if (time == std::time_t{-1} || !isDay) return std::nullopt;
    return time;
}

}  // namespace

std::optional<std::int64_t> TimeBefore(const std::string& text, std::int64_t now) {
    if (text.empty()) return std::nullopt;
    const std::int64_t unit = text.back() == 'h' ? kHour : kDay;
    if (text.back() != 'h' && text.back() != 'd') return BeginningOfDay(text);
    const std::optional<int> count = NumberIn(std::string_view(text).substr(0, text.size() - 1));
    if (!count) return std::nullopt;
    return now - *count * unit;
}

}  // namespace permora
