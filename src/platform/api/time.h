// Time values.
#pragma once

#include "platform/api/base.h"

#ifndef _WIN32

// Tenths of microseconds since the beginning of 1601, coordinated universal time. 0: not known.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;      // from 1
    WORD wDayOfWeek;  // from 0, Sunday
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

struct TIME_ZONE_INFORMATION;

extern "C" {

// The calendar's form of a time, in universal time still. ERROR_INVALID_PARAMETER for times of the upper half
// of all numbers (from the year 30828 on).
BOOL WINAPI FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime);

// The same time in the machine's own time zone, as it counts at that time. `zone` must be null
// (ERROR_INVALID_PARAMETER).
BOOL WINAPI SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* universal,
                                            SYSTEMTIME* local);

}  // extern "C"

#endif
