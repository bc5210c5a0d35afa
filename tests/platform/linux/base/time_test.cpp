#include "platform/linux/base/time.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "platform/api/errors.h"

namespace permora::host {
namespace {

TEST(Times, OfTheHostReachTheCalendar) {
    constexpr time_t kFirst = std::numeric_limits<time_t>::min();
    const struct {
        timespec host;
        std::array<int, 8> calendar;  // year, month, day of the week, day, hour, minute, second, millisecond
    } cases[] = {
        {{0, 0}, {1970, 1, 4, 1, 0, 0, 0, 0}},
        {{1'267'970'700, 999'999'999}, {2010, 3, 0, 7, 14, 5, 0, 999}},
        {{-1, 500'000'000}, {1969, 12, 3, 31, 23, 59, 59, 500}},
        {{951'782'399, 0}, {2000, 2, 1, 28, 23, 59, 59, 0}},
        {{951'782'400, 0}, {2000, 2, 2, 29, 0, 0, 0, 0}},
        {{4'107'542'400, 0}, {2100, 3, 1, 1, 0, 0, 0, 0}},  // no leap year
        {{kFirst, 0}, {1601, 1, 1, 1, 0, 0, 0, 0}},         // before all that can be written
    };
    for (const auto& [host, calendar] : cases) {
        const FILETIME time = FileTimeOf(host);
        SYSTEMTIME got{};
        ASSERT_TRUE(FileTimeToSystemTime(&time, &got));
        const std::array<int, 8> found{got.wYear, got.wMonth,  got.wDayOfWeek, got.wDay,
                                       got.wHour, got.wMinute, got.wSecond,    got.wMilliseconds};
        EXPECT_EQ(found, calendar) << host.tv_sec;
    }
}

TEST(Times, BeyondTheCalendarAreRefusedAndThoseOfTheHostNeverLieThere) {
    SYSTEMTIME got{};
    got.wYear = 7;
    const FILETIME beyond{0, 0x80000000};
    EXPECT_FALSE(FileTimeToSystemTime(&beyond, &got));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(got.wYear, 7);
    const FILETIME last = FileTimeOf({std::numeric_limits<time_t>::max(), 999'999'999});
    EXPECT_TRUE(FileTimeToSystemTime(&last, &got));
    EXPECT_EQ(got.wYear, 30828);
}

}  // namespace
}  // namespace permora::host
