// The headers of an MP4 file.
#include "jobs/duration.h"
#include "tests/fuzz/target.h"
#include "tool/edit/copyable_part.h"
#include "tool/edit/source_file.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"

#include <regex>

namespace {

constexpr int64_t hundredYears = 100LL * 365 * 24 * 3600 * 1000000;

void CheckTrack(const tool::MovieTrack& track)
{
    Require(track.codec.empty() || track.codec.size() == 4, "a codec has four letters or none");
    Require(track.trimmedStart >= 0 && track.trimmedStart <= 2 * hundredYears,
            "what is left out is a time");
    Require(track.timescale > 0, "time has ticks");
    Require(track.configuration.size() <= 4096, "what sets up a decoder is short");
    Require(!track.start || track.trimmedTicks <= track.mediaDuration,
            "what is left out is part of the media");
    Require(!track.start || (*track.start >= 0 && *track.start <= 2 * hundredYears),
            "a track begins at a time");
    Require(!track.end || (*track.end >= *track.start && *track.end <= 4 * hundredYears),
            "a track ends after it begins");
}

void CheckMovie(const std::string& path)
{
    tool::FrugalFile file(path, tool::movieAllowance);
    const auto movie = tool::ReadMovie(file);
    Require(file.BytesRead() <= tool::movieAllowance, "no more is read than allowed");
    if (!movie) {
        return;
    }
    Require(!movie->tracks.empty(), "a movie has a track");
    Require(!movie->duration || (*movie->duration > 0 && *movie->duration <= 2 * hundredYears),
            "a duration is more than nothing");
    for (const tool::MovieTrack& track : movie->tracks) {
        CheckTrack(track);
    }
}

void CheckPart(const std::string& path)
{
    const auto source = tool::OpenSource(path);
    Require(source.has_value(), "a file can be opened");
    Require(source->size <= source->identity.size, "no more is read than there is");
    const auto part = tool::ReadCopyablePart(*source);
    Require(!part || (part->ticks > 0 && part->timescale > 0), "a part has a length");
    Require(!part || part->hasVideo || part->hasAudio, "a part has a track");
}

void CheckProbe(const std::string& path)
{
    static const std::regex line(
        R"(  Duration: \d{2,}:[0-5]\d:[0-5]\d\.\d\d, start: \d+\.\d{6}, bitrate: \d+ kb/s\n)");
    const auto text = tool::ProbeText(path);
    Require(!text || std::regex_match(*text, line), "a duration is told as ffmpeg tells it");
    Require(!text || DurationSeconds(
                         QString::fromStdString(FindDuration(QString::fromStdString(*text)))) >= 0,
            "the recorder reads what is told");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const ScratchFile file("movie.mp4");
    file.Write(data, size);
    CheckMovie(file.Path());
    CheckPart(file.Path());
    CheckProbe(file.Path());
    return 0;
}
