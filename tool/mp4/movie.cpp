#include "tool/mp4/movie.h"

#include "tool/mp4/boxes.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie_track.h"
#include "tool/system/one_of.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>

namespace tool {
namespace {

constexpr int64_t second = 1000000; // in microseconds

// Boxes that can be next to the movie box of an ordinary movie.
constexpr std::array<uint32_t, 5> harmlessBoxes = {
    BoxType("mdat"), BoxType("free"), BoxType("skip"), BoxType("wide"), BoxType("uuid")};

// Boxes of a fragmented movie.
constexpr std::array<uint32_t, 4> fragmentBoxes = {BoxType("moof"), BoxType("sidx"),
                                                   BoxType("mfra"), BoxType("styp")};

class MovieReader
{
public:
    explicit MovieReader(FrugalFile& file) : m_file(file) {}

    std::optional<Movie> Read()
    {
        const bool good = m_file.IsOpen() && ReadTopLevel() && ReadMovieBox() && !m_file.Failed();
        return good ? std::optional<Movie>(m_movie) : std::nullopt;
    }

private:
    bool ReadTopLevel();
    bool ReadMovieBox();
    bool ReadMovieHeader(const Box& box);
    bool ReadChild(const Box& box);

    FrugalFile& m_file;
    Movie m_movie;
    Box m_movieBox;
    uint64_t m_timescale = 0; // ticks per second
};

bool MovieReader::ReadTopLevel()
{
    BoxWalk walk(m_file, 0, m_file.Size());
    const auto first = walk.Next();
    if (!first || first->type != BoxType("ftyp")) {
        return false;
    }
    while (const auto box = walk.Next()) {
        if (box->type == BoxType("moov") && m_movieBox.end == 0) {
            m_movieBox = *box;
        } else if (IsOneOf(fragmentBoxes, box->type)) {
            m_movie.fragmented = true;
        } else if (!IsOneOf(harmlessBoxes, box->type)) {
            return false;
        }
    }
    return !walk.Damaged() && m_movieBox.end != 0;
}

bool MovieReader::ReadMovieHeader(const Box& box)
{
    constexpr uint64_t mostBytes = 112; // version 1
    const std::string content = ReadContent(m_file, box, mostBytes);
    ByteReader reader(content);
    const uint32_t version = reader.Take32() >> 24U;
    const bool wide = version == 1;
    if (version > 1 || m_timescale != 0 || content.size() < (wide ? mostBytes : 100U)) {
        return false;
    }
    const size_t width = wide ? 8 : 4;
    reader.Skip(2 * width); // creation and modification
    m_timescale = reader.Take32();
    m_movie.duration = Microseconds(reader.Take(width), m_timescale);
    if (m_movie.duration == 0) {
        m_movie.duration.reset(); // the tracks or fragments have it, if anything does
    }
    return m_timescale != 0 && m_timescale <= INT32_MAX;
}

bool MovieReader::ReadChild(const Box& box)
{
    switch (box.type) {
    case BoxType("mvhd"):
        return ReadMovieHeader(box);
    case BoxType("trak"): {
        const auto track = m_timescale != 0 ? ReadTrack(m_file, box, m_timescale) : std::nullopt;
        if (track) {
            m_movie.tracks.push_back(*track);
        }
        return track.has_value();
    }
    case BoxType("mvex"):
        m_movie.fragmented = true;
        return true;
    case BoxType("udta"):
        return IsPlainUserData(m_file, box);
    case BoxType("iods"):
    case BoxType("meta"):
    case BoxType("free"):
        return true;
    default:
        return false;
    }
}

bool MovieReader::ReadMovieBox()
{
    BoxWalk walk(m_file, m_movieBox);
    while (const auto box = walk.Next()) {
        if (!ReadChild(*box)) {
            return false;
        }
    }
    return !walk.Damaged() && m_timescale != 0 && !m_movie.tracks.empty();
}

// Whether ffmpeg would open this as a file, not a protocol, and read it as a movie.
bool IsPlainName(const std::string& path)
{
    const size_t dot = path.rfind('.');
    std::string ending = dot == std::string::npos ? std::string() : path.substr(dot);
    std::transform(ending.begin(), ending.end(), ending.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    const bool isMovie = ending == ".mp4" || ending == ".m4v" || ending == ".mov";
    return isMovie && path.substr(0, path.find('/')).find(':') == std::string::npos;
}

// In ffmpeg's format. Duration and start are in microseconds, the bit rate in bits per second.
std::string DurationText(int64_t duration, int64_t start, double bitRate)
{
    const int64_t shown = duration + second / 200;
    const int64_t seconds = shown / second;
    std::array<char, 160> line{};
    std::snprintf(line.data(), line.size(),
                  "  Duration: %02" PRId64 ":%02" PRId64 ":%02" PRId64 ".%02" PRId64
                  ", start: %" PRId64 ".%06" PRId64 ", bitrate: %" PRId64 " kb/s\n",
                  seconds / 3600, seconds / 60 % 60, seconds % 60, 100 * (shown % second) / second,
                  start / second, start % second, static_cast<int64_t>(bitRate) / 1000);
    return line.data();
}

} // namespace

std::optional<Movie> ReadMovie(FrugalFile& file)
{
    return MovieReader(file).Read();
}

std::optional<std::string> ProbeText(const std::string& path)
{
    if (!IsPlainName(path)) {
        return std::nullopt;
    }
    FrugalFile file(path, movieAllowance);
    const auto movie = ReadMovie(file);
    if (!movie || movie->fragmented || movie->duration.value_or(0) == 0) {
        return std::nullopt;
    }
    std::optional<int64_t> start;
    for (const MovieTrack& track : movie->tracks) {
        if (track.kind == TrackKind::Other || !track.start) {
            return std::nullopt;
        }
        start = std::min(start.value_or(*track.start), *track.start);
    }
    const double bitRate =
        static_cast<double>(file.Size()) * 8.0 * second / static_cast<double>(*movie->duration);
    if (!start || bitRate >= 1e15) {
        return std::nullopt;
    }
    return DurationText(*movie->duration, *start, bitRate);
}

} // namespace tool
