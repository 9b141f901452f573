#include "tool/mp4/movie_track.h"

#include "tool/mp4/edit_list.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/sample_description.h"
#include "tool/mp4/sample_table_check.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tool {
namespace {

// Anything longer is an error in the file, and rounding it would overflow 64 bits.
constexpr uint64_t longest = 100ULL * 365 * 24 * 3600; // seconds

// Larger user data is left to ffmpeg.
constexpr uint64_t largestUserData = 2048;

// The boxes of a track. Missing ones are empty boxes at 0.
struct TrackBoxes : SampleTableBoxes
{
    Box trackHeader;
    Box editList;
    Box mediaHeader;
    Box handler;
    Box sampleDescription;
};

constexpr std::array<std::pair<uint32_t, Box TrackBoxes::*>, 12> wanted = {{
    {BoxType("tkhd"), &TrackBoxes::trackHeader},
    {BoxType("elst"), &TrackBoxes::editList},
    {BoxType("mdhd"), &TrackBoxes::mediaHeader},
    {BoxType("hdlr"), &TrackBoxes::handler},
    {BoxType("stsd"), &TrackBoxes::sampleDescription},
    {BoxType("stts"), &TrackBoxes::durations},
    {BoxType("ctts"), &TrackBoxes::compositionOffsets},
    {BoxType("stss"), &TrackBoxes::syncSamples},
    {BoxType("stsz"), &TrackBoxes::sizes},
    {BoxType("stsc"), &TrackBoxes::chunks},
    {BoxType("stco"), &TrackBoxes::chunkOffsets},
    {BoxType("co64"), &TrackBoxes::longChunkOffsets},
}};

bool IsContainer(uint32_t type)
{
    return type == BoxType("edts") || type == BoxType("mdia") || type == BoxType("minf") ||
           type == BoxType("stbl");
}

class TrackReader
{
public:
    TrackReader(FrugalFile& file, uint64_t movieTimescale)
        : m_file(file),
          m_movieTimescale(movieTimescale)
    {
    }
    std::optional<MovieTrack> Read(const Box& box);

private:
    bool Collect(const Box& box, int depth);
    bool ReadTrackHeader();
    bool ReadMediaHeader();
    void ReadHandler();
    std::optional<uint64_t> FirstCompositionOffset();
    void ReadEdits();

    FrugalFile& m_file;
    uint64_t m_movieTimescale;
    TrackBoxes m_boxes;
    MovieTrack m_track;
};

// Finds all relevant boxes. Returns false if there are two of a kind.
bool TrackReader::Collect(const Box& box, int depth)
{
    BoxWalk walk(m_file, box);
    while (const auto child = walk.Next()) {
        if (IsContainer(child->type)) {
            if (depth == 0 || !Collect(*child, depth - 1)) {
                return false;
            }
        } else if (child->type == BoxType("udta") && !IsPlainUserData(m_file, *child)) {
            return false;
        }
        for (const auto& [type, member] : wanted) {
            if (child->type == type) {
                if ((m_boxes.*member).end != 0 || child->Size() < 8) {
                    return false;
                }
                m_boxes.*member = *child;
            }
        }
    }
    return !walk.Damaged();
}

// The first four numbers of the matrix describe rotation and mirroring.
bool TrackReader::ReadTrackHeader()
{
    constexpr uint64_t mostBytes = 96; // version 1
    ByteReader reader(ReadContent(m_file, m_boxes.trackHeader, mostBytes));
    const size_t width = reader.Take32() >> 24U == 1 ? 8 : 4;
    reader.Skip(2 * width); // creation and modification
    m_track.id = reader.Take32();
    reader.Skip(4 + width + 16); // duration, layer, group and volume
    constexpr uint32_t one = 0x10000;
    std::array<uint32_t, 9> matrix{};
    std::generate(matrix.begin(), matrix.end(), [&] { return reader.Take32(); });
    m_track.transformed = matrix[0] != one || matrix[1] != 0 || matrix[3] != 0 || matrix[4] != one;
    m_track.width = reader.Take32();
    m_track.height = reader.Take32();
    return !reader.Failed();
}

bool TrackReader::ReadMediaHeader()
{
    constexpr uint64_t mostBytes = 36; // version 1
    const std::string content = ReadContent(m_file, m_boxes.mediaHeader, mostBytes);
    ByteReader reader(content);
    const uint32_t version = reader.Take32() >> 24U;
    const size_t width = version == 1 ? 8 : 4;
    reader.Skip(2 * width); // creation and modification
    m_track.timescale = reader.Take32();
    m_track.mediaDuration = reader.Take(width);
    return version <= 1 && !reader.Failed() && m_track.timescale != 0;
}

void TrackReader::ReadHandler()
{
    constexpr uint64_t mostBytes = 12;
    ByteReader reader(ReadContent(m_file, m_boxes.handler, mostBytes));
    reader.Skip(8); // version, flags and a field of an older format
    const uint32_t type = reader.Take32();
    m_track.kind = type == BoxType("vide")   ? TrackKind::Video
                   : type == BoxType("soun") ? TrackKind::Audio
                                             : TrackKind::Other;
}

// Nothing if the offsets may be negative, which shifts everything else.
std::optional<uint64_t> TrackReader::FirstCompositionOffset()
{
    constexpr uint64_t mostBytes = 16;
    ByteReader reader(ReadContent(m_file, m_boxes.compositionOffsets, mostBytes));
    const uint32_t version = reader.Take32() >> 24U;
    if (reader.Take32() == 0) {
        return 0;
    }
    reader.Skip(4); // the number of samples with this offset
    const uint32_t offset = reader.Take32();
    return reader.Failed() || version != 0 ? std::nullopt : std::optional<uint64_t>(offset);
}

void TrackReader::ReadEdits()
{
    const auto firstOffset = FirstCompositionOffset();
    EditList list;
    if (m_boxes.editList.end != 0) {
        const auto found = ReadEditList(m_file, m_boxes.editList);
        m_track.unusualEdits = !found;
        list = found.value_or(list);
    }
    const uint64_t first = firstOffset.value_or(0);
    m_track.trimmedTicks = list.mediaTime > first ? list.mediaTime - first : 0;
    const auto trimmed = Microseconds(m_track.trimmedTicks, m_track.timescale);
    const auto empty = Microseconds(list.emptyDuration, m_movieTimescale);
    m_track.unusualEdits = m_track.unusualEdits || !trimmed || !empty;
    m_track.trimmedStart = trimmed.value_or(0);
    m_track.emptyStart = empty.value_or(0);
    // Starts before the first frame or after the last one are left to ffmpeg.
    if (m_track.unusualEdits || !firstOffset || list.mediaTime < first ||
        (m_boxes.editList.end != 0 && list.mediaTime >= m_track.mediaDuration) ||
        m_track.codec.empty() || !BeginWithSyncSample(m_file, m_boxes)) {
        return;
    }
    m_track.start = m_track.emptyStart;
    auto shown = Microseconds(m_track.mediaDuration, m_track.timescale);
    if (!shown) {
        return;
    }
    *shown -= m_track.trimmedStart;
    if (list.segmentDuration > 0) {
        shown =
            std::min(*shown, Microseconds(list.segmentDuration, m_movieTimescale).value_or(*shown));
    }
    m_track.end = *m_track.start + *shown;
}

std::optional<MovieTrack> TrackReader::Read(const Box& box)
{
    constexpr int deepest = 3; // mdia, minf, stbl
    if (!Collect(box, deepest) || m_boxes.trackHeader.end == 0 || m_boxes.handler.end == 0 ||
        m_boxes.sampleDescription.end == 0 || m_boxes.mediaHeader.end == 0 || !ReadTrackHeader() ||
        !ReadMediaHeader()) {
        return std::nullopt;
    }
    ReadHandler();
    auto description = ReadSampleDescription(m_file, m_boxes.sampleDescription, m_track.kind);
    m_track.codec = std::move(description.codec);
    m_track.configuration = std::move(description.configuration);
    ReadEdits();
    return m_file.Failed() ? std::nullopt : std::optional(std::move(m_track));
}

} // namespace

std::optional<int64_t> Microseconds(uint64_t ticks, uint64_t timescale)
{
    constexpr uint64_t second = 1000000;
    if (timescale == 0 || timescale > UINT32_MAX || ticks / timescale > longest) {
        return std::nullopt;
    }
    const uint64_t rest = ticks % timescale;
    return static_cast<int64_t>(ticks / timescale * second +
                                (rest * second + timescale / 2) / timescale);
}

// "iTunSMPB" is a note on leading silence, which ffmpeg honours.
bool IsPlainUserData(FrugalFile& file, const Box& box)
{
    const std::string content = ReadContent(file, box, largestUserData);
    return box.Size() <= largestUserData && content.size() == box.Size() &&
           content.find("iTunSMPB") == std::string::npos;
}

std::optional<MovieTrack> ReadTrack(FrugalFile& file, const Box& box, uint64_t movieTimescale)
{
    return TrackReader(file, movieTimescale).Read(box);
}

} // namespace tool
