#include "util/format.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cwchar>

namespace {

constexpr std::size_t kWideLimit = 4096;

struct Clock
{
    long long hours;
    long long minutes;
    long long seconds;
};

Clock ClockOf(long long seconds)
{
    if (seconds < 60) {
        return {0, 0, seconds}; // negative counts too
    }
    return {seconds / 3600, seconds / 60 % 60, seconds % 60};
}

std::string Scaled(long long bytes, long long unit, const char* name)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.2f %s",
                  static_cast<double>(bytes) / static_cast<double>(unit), name);
    return text.data();
}

} // namespace

std::string GetTimeStringA(long long seconds)
{
    const Clock clock = ClockOf(seconds);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02lld:%02lld:%02lld", clock.hours, clock.minutes,
                  clock.seconds);
    return text.data();
}

std::wstring GetTimeString(long long seconds)
{
    const Clock clock = ClockOf(seconds);
    std::array<wchar_t, kWideLimit> text{};
    rsb_wsprintf(text.data(), L"%02lld:%02lld:%02lld", clock.hours, clock.minutes, clock.seconds);
    return text.data();
}

std::string GetFileSizeString(long long bytes)
{
    constexpr long long kKilo = 1024;
    if (bytes >= kKilo * kKilo * kKilo * kKilo) {
        return Scaled(bytes, kKilo * kKilo * kKilo * kKilo, "TB");
    }
    if (bytes >= kKilo * kKilo * kKilo) {
        return Scaled(bytes, kKilo * kKilo * kKilo, "GB");
    }
    if (bytes >= kKilo * kKilo) {
        return Scaled(bytes, kKilo * kKilo, "MB");
    }
    if (bytes < kKilo) {
        return std::to_string(static_cast<int>(bytes)) + " Bytes";
    }
    return Scaled(bytes, kKilo, "KB");
}

int rsb_wsprintf(wchar_t* buffer, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int written = std::vswprintf(buffer, kWideLimit, format, arguments);
    va_end(arguments);
    return written;
}
