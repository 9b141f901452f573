#pragma once

#include <cstdint>

// A local time. The day of the month comes before the day of the week on purpose.
struct SYSTEMTIME
{
    std::uint16_t wYear;
    std::uint16_t wMonth; // 1 to 12
    std::uint16_t wDay;
    std::uint16_t wDayOfWeek; // 0 is Sunday
    std::uint16_t wHour;
    std::uint16_t wMinute;
    std::uint16_t wSecond;
    std::uint16_t wMilliseconds;
};

// Milliseconds since an arbitrary moment, in steps of ten. Only differences are meaningful.
long long rsb_getTickCount();

// Returns 0, or 34 (ERANGE) if the system cannot tell the local time.
int rsb_getLocalTime(SYSTEMTIME* time);
