#include "cli/history_age.h"

#include <gtest/gtest.h>

#include <ctime>

#include "tests/support/scoped_variable.h"

namespace permora::test {
namespace {

TEST(HistoryAgeTest, AgesAndDaysAreUnderstoodAndNothingElse) {
    const ScopedVariable zone("TZ", "EST5EDT");
    tzset();
    constexpr std::int64_t kNow = 1'800'000'000;
    struct Row {
        const char* text;
        std::optional<std::int64_t> time;
    };
    constexpr Row kRows[] = {
        {"30d", kNow - 30 * 86400},
        {"12h", kNow - 12 * 3600},
        {"0d", kNow},
        {"1970-01-02", 86400 + 5 * 3600},
        {"2026-07-01", 1'782'878'400},
        {"2024-02-29", 1'709'182'800},
        {"2026-02-29", {}},
        {"2026-13-01", {}},
        {"1969-12-31", {}},
        {"2026-1-01", {}},
        {"-1d", {}},
        {"d", {}},
        {"", {}},
        {"5", {}},
        {"5m", {}},
        {"999999999999d", {}},
    };
    for (const Row& row : kRows)
        EXPECT_EQ(TimeBefore(row.text, kNow), row.time) << row.text;
}

}  // namespace
}  // namespace permora::test
