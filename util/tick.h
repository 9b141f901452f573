#pragma once

#include <cstdint>

// A local time. The day of the month stands before the day of the week, and is meant to.
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

// Milliseconds since some moment, in steps of ten; only differences mean something.
long long rsb_getTickCount();

// 0, or 34 (ERANGE's number) when the system cannot say the local time.
int rsb_getLocalTime(SYSTEMTIME* time);
