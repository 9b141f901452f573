#include "util/tick.h"

#include <ctime>
#include <sys/time.h>
#include <sys/times.h>

long long rsb_getTickCount()
{
    struct tms unused = {};
    return static_cast<long long>(times(&unused)) * 10; // 100 clock ticks a second
}

int rsb_getLocalTime(SYSTEMTIME* time)
{
    struct timeval now = {};
    struct tm local = {};
    gettimeofday(&now, nullptr);
    if (localtime_r(&now.tv_sec, &local) == nullptr) {
        return 34;
    }
    const auto field = [](long value) { return static_cast<std::uint16_t>(value); };
    *time = {field(local.tm_year + 1900L), field(local.tm_mon + 1L), field(local.tm_mday),
             field(local.tm_wday),         field(local.tm_hour),     field(local.tm_min),
             field(local.tm_sec),          field(now.tv_usec / 1000)};
    return 0;
}
