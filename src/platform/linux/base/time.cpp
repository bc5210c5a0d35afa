#include "platform/linux/base/time.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <limits>

#include "platform/api/errors.h"
#include "platform/linux/base/failure.h"

namespace permora::host {
namespace {

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

constexpr std::int64_t kTicksPerSecond = Ticks::period::den;

// From the start of 1601 to the start of 1970.
constexpr std::int64_t kSecondsBeforeEpoch = 11'644'473'600;

constexpr std::chrono::sys_days kFirstDay{std::chrono::year{1601} / 1 / 1};

}  // namespace

FILETIME FileTimeOf(const timespec& time) {
    constexpr std::int64_t kLatest =
        std::numeric_limits<std::int64_t>::max() / kTicksPerSecond - kSecondsBeforeEpoch - 1;
    const std::int64_t seconds = std::clamp<std::int64_t>(time.tv_sec, -kSecondsBeforeEpoch, kLatest);
    const std::int64_t ticks = (seconds + kSecondsBeforeEpoch) * kTicksPerSecond + time.tv_nsec / 100;
    return {static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
}

}  // namespace permora::host

BOOL WINAPI FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime) {
    using namespace std::chrono;
    const auto count =
        static_cast<std::int64_t>(ULONGLONG{fileTime->dwHighDateTime} << 32 | fileTime->dwLowDateTime);
    if (count < 0) return permora::host::Fail(ERROR_INVALID_PARAMETER);
    const permora::host::Ticks ticks(count);
    const auto sinceFirstDay = floor<days>(ticks);
    const sys_days day = permora::host::kFirstDay + sinceFirstDay;
    const year_month_day date(day);
    const hh_mm_ss time(floor<milliseconds>(ticks - sinceFirstDay));

    *systemTime = {static_cast<WORD>(static_cast<int>(date.year())),
                   static_cast<WORD>(static_cast<unsigned>(date.month())),
                   static_cast<WORD>(weekday(day).c_encoding()),
                   static_cast<WORD>(static_cast<unsigned>(date.day())),
                   static_cast<WORD>(time.hours().count()),
                   static_cast<WORD>(time.minutes().count()),
                   static_cast<WORD>(time.seconds().count()),
                   static_cast<WORD>(time.subseconds().count())};
    return TRUE;
}

BOOL WINAPI SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* universal,
                                            SYSTEMTIME* local) {
    constexpr int kFirstYear = 1900;
    std::tm calendar{};
    calendar.tm_year = universal->wYear - kFirstYear;
    calendar.tm_mon = universal->wMonth - 1;
    calendar.tm_mday = universal->wDay;
    calendar.tm_hour = universal->wHour;
    calendar.tm_min = universal->wMinute;
    calendar.tm_sec = universal->wSecond;
    const std::time_t seconds = timegm(&calendar);
    if (zone != nullptr || localtime_r(&seconds, &calendar) == nullptr)
        return permora::host::Fail(ERROR_INVALID_PARAMETER);
    *local = {static_cast<WORD>(calendar.tm_year + kFirstYear),
              static_cast<WORD>(calendar.tm_mon + 1),
              static_cast<WORD>(calendar.tm_wday),
              static_cast<WORD>(calendar.tm_mday),
              static_cast<WORD>(calendar.tm_hour),
              static_cast<WORD>(calendar.tm_min),
              static_cast<WORD>(calendar.tm_sec),
              universal->wMilliseconds};
    return TRUE;
}
