#include "tool/mp4/movie_track.h"

#include "tool/mp4/frugal_file.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tool {
namespace {

// Anything longer is an error in the file, and rounding it would overflow 64 bits.
constexpr uint64_t longest = 100ULL * 365 * 24 * 3600; // seconds

// Larger descriptive boxes are left to ffmpeg.
constexpr uint64_t largestDescription = 2048;

// The boxes of a track by type. Missing ones are empty boxes at 0.
struct TrackBoxes
{
    Box header;
    Box edits;
    Box mediaHeader;
    Box handler;
    Box descriptions;
    Box times;
    Box shifts;
    Box keys;
    Box sizes;
    Box runs;
    Box chunks;
    Box wideChunks;
};

constexpr std::array<std::pair<uint32_t, Box TrackBoxes::*>, 12> wanted = {{
    {BoxType("tkhd"), &TrackBoxes::header},
    {BoxType("elst"), &TrackBoxes::edits},
    {BoxType("mdhd"), &TrackBoxes::mediaHeader},
    {BoxType("hdlr"), &TrackBoxes::handler},
    {BoxType("stsd"), &TrackBoxes::descriptions},
    {BoxType("stts"), &TrackBoxes::times},
    {BoxType("ctts"), &TrackBoxes::shifts},
    {BoxType("stss"), &TrackBoxes::keys},
    {BoxType("stsz"), &TrackBoxes::sizes},
    {BoxType("stsc"), &TrackBoxes::runs},
    {BoxType("stco"), &TrackBoxes::chunks},
    {BoxType("co64"), &TrackBoxes::wideChunks},
}};

bool IsContainer(uint32_t type)
{
    return type == BoxType("edts") || type == BoxType("mdia") || type == BoxType("minf") ||
           type == BoxType("stbl");
}

class TrackReader
{
public:
    TrackReader(FrugalFile& file, uint64_t movieScale) : m_file(file), m_movieScale(movieScale) {}
    std::optional<MovieTrack> Read(const Box& box);

private:
    bool Collect(const Box& box, int depth);
    bool ReadMediaHeader();
    void ReadKind();
    void ReadCodec();
    bool IsAac(const Box& details);
    void ReadTurn();
    void ReadStart();
    void ReadEdits(uint64_t firstShift);
    bool IsWholeTable(const Box& table, uint64_t width, uint64_t offset);
    bool BeginsWhole();
    uint64_t Count(const Box& table) { return m_file.Number(table.begin + 4, 4); }

    FrugalFile& m_file;
    uint64_t m_movieScale;
    uint64_t m_scale = 0;    // ticks per second
    uint64_t m_duration = 0; // ticks
    TrackBoxes m_boxes;
    MovieTrack m_track;
};

// Finds all relevant boxes. Returns false if there are two of a kind.
bool TrackReader::Collect(const Box& box, int depth)
{
    BoxWalk walk(m_file, box);
    while (const auto part = walk.Next()) {
        if (IsContainer(part->type)) {
            if (depth == 0 || !Collect(*part, depth - 1)) {
                return false;
            }
        } else if (part->type == BoxType("udta")) {
            if (!IsPlainDescription(m_file, *part)) {
                return false;
            }
        }
        for (const auto& [type, place] : wanted) {
            if (part->type == type) {
                if ((m_boxes.*place).end != 0 || part->Size() < 8) {
                    return false;
                }
                m_boxes.*place = *part;
            }
        }
    }
    return !walk.Damaged();
}

bool TrackReader::ReadMediaHeader()
{
    const Box& box = m_boxes.mediaHeader;
    const uint64_t version = box.end != 0 ? m_file.Number(box.begin, 1) : 0;
    const bool wide = version == 1;
    if (version > 1 || box.Size() < (wide ? 32U : 20U)) {
        return false;
    }
    const uint64_t place = box.begin + (wide ? 20 : 12);
    m_scale = m_file.Number(place, 4);
    m_duration = m_file.Number(place + 4, wide ? 8 : 4);
    return m_scale != 0;
}

void TrackReader::ReadKind()
{
    const uint64_t kind =
        m_boxes.handler.Size() >= 12 ? m_file.Number(m_boxes.handler.begin + 8, 4) : 0;
    m_track.kind = kind == BoxType("vide")   ? TrackKind::Video
                   : kind == BoxType("soun") ? TrackKind::Audio
                                             : TrackKind::Other;
}

void TrackReader::ReadCodec()
{
    const Box& box = m_boxes.descriptions;
    BoxWalk walk(m_file, box.begin + 8, box.end);
    const bool one = m_file.Number(box.begin, 4) == 0 && Count(box) == 1;
    const auto entry = one ? walk.Next() : std::nullopt;
    const uint64_t fields = m_track.kind == TrackKind::Audio ? 28 : 78;
    if (!entry || entry->end != box.end || entry->Size() < fields) {
        return;
    }
    for (int shift = 24; shift >= 0; shift -= 8) {
        m_track.codec += static_cast<char>(entry->type >> static_cast<unsigned>(shift) & 0xffU);
    }
    BoxWalk parts(m_file, entry->begin + fields, entry->end);
    while (const auto part = parts.Next()) {
        if (part->type == BoxType("esds") && entry->type == BoxType("mp4a") && IsAac(*part)) {
            m_track.codec = "aac ";
        }
    }
    if (parts.Damaged()) {
        m_track.codec.clear();
    }
}

// "mp4a" stands for several codecs. A number after two tags and their lengths says which.
bool TrackReader::IsAac(const Box& details)
{
    std::array<uint8_t, 32> bytes{};
    const size_t size = std::min<uint64_t>(bytes.size(), details.Size());
    if (!m_file.Read(details.begin, bytes.data(), size)) {
        return false;
    }
    size_t at = 4;
    const auto next = [&] { return at < size ? bytes.at(at++) : uint8_t{0}; };
    const auto skipLength = [&] {
        while ((next() & 0x80U) != 0) {
        }
    };
    constexpr uint8_t streamTag = 3;
    constexpr uint8_t decoderTag = 4;
    constexpr uint8_t aac = 0x40;
    if (next() != streamTag) {
        return false;
    }
    skipLength();
    at += 3;
    if (next() != decoderTag) {
        return false;
    }
    skipLength();
    return next() == aac;
}

// The first four numbers of the matrix describe rotation and mirroring.
void TrackReader::ReadTurn()
{
    const bool wide = m_file.Number(m_boxes.header.begin, 1) == 1;
    const uint64_t matrix = m_boxes.header.begin + (wide ? 52 : 40);
    if (m_boxes.header.end < matrix + 36) {
        m_track.transformed = true;
        return;
    }
    constexpr uint64_t one = 0x10000;
    m_track.transformed = m_file.Number(matrix, 4) != one || m_file.Number(matrix + 4, 4) != 0 ||
                          m_file.Number(matrix + 12, 4) != 0 ||
                          m_file.Number(matrix + 16, 4) != one;
}

// Whether the table has entries of `width` bytes each from `offset` on, and nothing else.
bool TrackReader::IsWholeTable(const Box& table, uint64_t width, uint64_t offset)
{
    if (table.Size() < offset + width || m_file.Number(table.begin, 4) != 0) {
        return false;
    }
    const uint64_t count = m_file.Number(table.begin + offset - 4, 4);
    return count > 0 && table.Size() == offset + count * width;
}

// Whether there are samples where the file says, and the first one is a sync sample. Checks all
// tables, because players reject a file for an error in any of them.
bool TrackReader::BeginsWhole()
{
    constexpr uint64_t behindCount = 8;
    const bool wide = m_boxes.wideChunks.end != 0;
    const Box& chunks = wide ? m_boxes.wideChunks : m_boxes.chunks;
    const size_t width = wide ? 8 : 4;
    if ((wide && m_boxes.chunks.end != 0) || !IsWholeTable(m_boxes.times, 8, behindCount) ||
        !IsWholeTable(chunks, width, behindCount) || !IsWholeTable(m_boxes.runs, 12, behindCount) ||
        (m_boxes.shifts.end != 0 && !IsWholeTable(m_boxes.shifts, 8, behindCount)) ||
        (m_boxes.keys.end != 0 && !IsWholeTable(m_boxes.keys, 4, behindCount))) {
        return false;
    }
    const Box& sizes = m_boxes.sizes;
    const bool equal = sizes.Size() == 12 && m_file.Number(sizes.begin, 4) == 0 &&
                       m_file.Number(sizes.begin + 4, 4) > 0 &&
                       m_file.Number(sizes.begin + 8, 4) > 0;
    const bool each =
        !equal && IsWholeTable(sizes, 4, 12) && m_file.Number(sizes.begin + 4, 4) == 0;
    const uint64_t firstRun = m_boxes.runs.begin + 8;
    return (equal || each) && m_file.Number(m_boxes.times.begin + 12, 4) > 0 &&
           m_file.Number(chunks.begin + 8, width) < m_file.Size() &&
           m_file.Number(firstRun, 4) == 1 && m_file.Number(firstRun + 4, 4) > 0 &&
           m_file.Number(firstRun + 8, 4) == 1 &&
           (m_boxes.keys.end == 0 || m_file.Number(m_boxes.keys.begin + 8, 4) == 1);
}

// Reads the usual edit list: optionally an empty edit, then the media from some time on.
// `firstShift` is the composition offset of the first frame, in ticks.
void TrackReader::ReadEdits(uint64_t firstShift)
{
    const Box& edits = m_boxes.edits;
    const uint64_t version = m_file.Number(edits.begin, 1);
    const bool wide = version == 1;
    const uint64_t entrySize = wide ? 20 : 12;
    const uint64_t nothing = wide ? UINT64_MAX : UINT32_MAX;
    const size_t width = wide ? 8 : 4;
    const uint64_t count = Count(edits);
    uint64_t entry = edits.begin + 8;
    if (version > 1 || count == 0 || count > 2 || edits.Size() < 8 + count * entrySize) {
        m_track.unusualEdits = true;
        return;
    }
    std::optional<int64_t> pause = 0;
    if (count == 2) {
        if (m_file.Number(entry + width, width) != nothing) {
            m_track.unusualEdits = true;
            return;
        }
        pause = Microseconds(m_file.Number(entry, width), m_movieScale);
        entry += entrySize;
    }
    const uint64_t from = m_file.Number(entry + width, width);
    const auto hidden = Microseconds(from > firstShift ? from - firstShift : 0, m_scale);
    const bool usualSpeed = m_file.Number(entry + 2 * width, 4) == 0x10000;
    m_track.unusualEdits = !usualSpeed || !hidden;
    m_track.trimmedStart = hidden.value_or(0);
    // Starts before the first frame or after the last one are left to ffmpeg.
    if (!m_track.unusualEdits && from >= firstShift && from < m_duration) {
        m_track.start = pause;
    }
}

void TrackReader::ReadStart()
{
    const bool shifted = m_boxes.shifts.end != 0 && Count(m_boxes.shifts) > 0;
    // Version 1 allows negative composition offsets, which shift everything else.
    const bool usualShifts =
        !shifted || (m_boxes.shifts.Size() >= 16 && m_file.Number(m_boxes.shifts.begin, 1) == 0);
    const uint64_t firstShift =
        shifted && usualShifts ? m_file.Number(m_boxes.shifts.begin + 12, 4) : 0;
    if (m_boxes.edits.end != 0) {
        ReadEdits(firstShift);
    } else if (!shifted) {
        m_track.start = 0;
    }
    if (!usualShifts || m_track.codec.empty() || !BeginsWhole()) {
        m_track.start.reset();
    }
    const auto length = Microseconds(m_duration, m_scale);
    if (m_track.start && length) {
        m_track.end = *m_track.start + *length - m_track.trimmedStart;
    }
}

std::optional<MovieTrack> TrackReader::Read(const Box& box)
{
    constexpr int deepest = 3; // mdia, minf, stbl
    if (!Collect(box, deepest) || m_boxes.header.end == 0 || m_boxes.handler.end == 0 ||
        m_boxes.descriptions.end == 0 || !ReadMediaHeader()) {
        return std::nullopt;
    }
    ReadKind();
    ReadCodec();
    ReadTurn();
    ReadStart();
    return m_file.Failed() ? std::nullopt : std::optional<MovieTrack>(m_track);
}

} // namespace

std::optional<int64_t> Microseconds(uint64_t count, uint64_t scale)
{
    constexpr uint64_t second = 1000000;
    if (scale == 0 || scale > UINT32_MAX || count / scale > longest) {
        return std::nullopt;
    }
    const uint64_t rest = count % scale;
    return static_cast<int64_t>(count / scale * second + (rest * second + scale / 2) / scale);
}

// "iTunSMPB" is a note on leading silence, which ffmpeg honours.
bool IsPlainDescription(FrugalFile& file, const Box& box)
{
    std::array<char, largestDescription> text{};
    const uint64_t size = box.Size();
    return size <= text.size() && file.Read(box.begin, text.data(), size) &&
           std::string_view(text.data(), size).find("iTunSMPB") == std::string_view::npos;
}

std::optional<MovieTrack> ReadTrack(FrugalFile& file, const Box& box, uint64_t movieScale)
{
    return TrackReader(file, movieScale).Read(box);
}

} // namespace tool
