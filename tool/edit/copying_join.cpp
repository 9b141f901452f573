#include "tool/edit/copying_join.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>

namespace tool {
namespace {

// Register 0 holds the end time of the sound kept so far, register 1 that there is some. A packet
// that starts more than half its length before that end is dropped. A gap of more than two packets
// resets the time to the end of the packet after it.
constexpr const char* soundInTime =
    R"(noise=drop='if(ld(1)*lt(pts\,ld(0)-d/2)\,1\,)"
    R"(0*st(0\,if(ld(1)*lte(pts\,ld(0)+2*d)\,ld(0)\,pts)+d)*st(1\,1))')";

std::string SecondsText(int64_t microseconds)
{
    constexpr int64_t second = 1000000;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%" PRId64 ".%06" PRId64, microseconds / second,
                  microseconds % second);
    return text.data();
}

// The list for ffmpeg's concat demuxer. The lengths are exact, so that the frames of all parts are
// evenly spaced: ffmpeg alone would begin the next part where the longer sound ends.
std::string List(const std::vector<std::string>& urls, const std::vector<CopyablePart>& parts)
{
    std::string list = "ffconcat version 1.0\n";
    for (size_t i = 0; i < parts.size(); ++i) {
        list += "file '" + urls[i] + "'\n";
        if (parts[i].fragmented) {
            // The sound before the start would otherwise count as the start.
            list += "inpoint 0\n";
        }
        const int64_t length = BeginOfPart(parts, i + 1) - BeginOfPart(parts, i);
        list += "duration " + SecondsText(length) + '\n';
    }
    return list;
}

} // namespace

int64_t BeginOfPart(const std::vector<CopyablePart>& parts, size_t index)
{
    // Rounded from the exact sum, so that errors do not add up.
    uint64_t ticks = 0;
    for (size_t i = 0; i < index; ++i) {
        ticks += parts[i].ticks;
    }
    constexpr uint64_t second = 1000000;
    const uint64_t scale = parts.front().timescale;
    return static_cast<int64_t>(ticks / scale * second +
                                (ticks % scale * second + scale / 2) / scale);
}

std::vector<std::string> CopyingJoin(const std::vector<std::string>& urls,
                                     const std::vector<CopyablePart>& parts, bool dropsOverlap)
{
    // Sound begins a packet before the video. Without -copyts ffmpeg would delay the video instead.
    std::vector<std::string> result = {"-copyts",
                                       "-f",
                                       "concat",
                                       "-safe",
                                       "0",
                                       "-auto_convert",
                                       "0",
                                       "-protocol_whitelist",
                                       "data,file,subfile",
                                       "-i",
                                       "data:text/plain," + List(urls, parts)};
    const auto add = [&](const char* kind, bool present) {
        if (present) {
            result.insert(result.end(), {"-map", kind});
        }
    };
    add("0:v:0", parts.front().hasVideo);
    add("0:a:0", parts.front().hasAudio);
    result.insert(result.end(), {"-c", "copy"});
    if (dropsOverlap && parts.front().hasAudio && parts.size() > 1) {
        result.insert(result.end(), {"-bsf:a", soundInTime});
    }
    return result;
}

} // namespace tool
