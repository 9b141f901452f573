// The duration in `tool`'s output, and the texts of times and sizes.
#include "jobs/duration.h"
#include "jobs/job_report.h"
#include "jobs/recording_status.h"
#include "tests/fuzz/target.h"
#include "util/format.h"

#include <cstring>

namespace {

void ReadDuration(const QString& output)
{
    const std::string found = FindDuration(output);
    const bool told = output.contains(kDurationMarker);
    Require(found.size() <= 8, "a duration has at most eight characters");
    Require(told || found.empty(), "there is no duration without its marker");
    Require(!told || output.contains(kDurationMarker + QString::fromLatin1(found.c_str())),
            "the duration stands behind the marker");
    // Eight characters, so at most "99999999".
    const long long seconds = DurationSeconds(QString::fromStdString(found));
    Require(seconds > -3600LL * 100000000 && seconds < 3600LL * 100000000,
            "a duration is within what eight characters can tell");
}

// Any text and any number of seconds: checks only that nothing goes wrong, and the round trip.
void ReadNumbers(const QString& text, const uint8_t* data, size_t size)
{
    DurationSeconds(text);
    int64_t number = 0;
    std::memcpy(&number, data, std::min(size, sizeof number));
    Require(!GetTimeStringA(number).empty(), "every time has a text");
    Require(!GetFileSizeString(number).empty(), "every size has a text");
    const auto start = static_cast<quint32>(number);
    const auto elapsed = static_cast<quint32>(number >> 32);
    Require(ElapsedMs(start, start + elapsed) == elapsed, "elapsed time is right across the wrap");
    Require(RecordingStatus(elapsed, number).startsWith("Recording... \n\n"),
            "the status begins with its title");
    const std::string time = GetTimeStringA(elapsed);
    Require(DurationSeconds(QString::fromStdString(time)) == elapsed,
            "a time text is read back: " + time);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = ToolTextOf(data, size);
    ReadDuration(text);
    ReadDuration(kDurationMarker + text);
    ReadNumbers(text, data, size);
    return 0;
}
