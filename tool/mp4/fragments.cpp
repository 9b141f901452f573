#include "tool/mp4/fragments.h"

#include "tool/mp4/frugal_file.h"

#include <algorithm>

namespace tool {
namespace {

// Flags of a track fragment header (tfhd).
constexpr uint32_t baseDataOffsetPresent = 0x1;
constexpr uint32_t sampleDescriptionIndexPresent = 0x2;
constexpr uint32_t defaultSampleDurationPresent = 0x8;
constexpr uint32_t defaultSampleSizePresent = 0x10;
constexpr uint32_t defaultSampleFlagsPresent = 0x20;

// Flags of a track run (trun).
constexpr uint32_t dataOffsetPresent = 0x1;
constexpr uint32_t firstSampleFlagsPresent = 0x4;
constexpr uint32_t sampleDurationPresent = 0x100;
constexpr uint32_t sampleSizePresent = 0x200;
constexpr uint32_t sampleFlagsPresent = 0x400;
constexpr uint32_t compositionOffsetPresent = 0x800;

// A flag of a sample.
constexpr uint32_t isNonSyncSample = 0x10000;

constexpr uint64_t mostInBox = 1U << 20U; // a second of samples takes a few kilobytes

// Sixty hours of picture and sound, which take half a gigabyte of memory.
constexpr uint64_t mostSamples = 1U << 24U;

// What is known of a track fragment (traf) before its track runs.
struct TrackFragment
{
    uint64_t dataOffset = 0; // to which those of the runs are relative: that of the moof, or named
    uint64_t decodeTime = 0; // of the next sample
    SampleDefaults defaults;
    FragmentedTrack* track = nullptr;
};

bool MayFollow(const TrackFragment& fragment)
{
    constexpr uint64_t mostTicks = 1ULL << 48U; // keeps sums and products within 64 bits
    if (fragment.track == nullptr || fragment.decodeTime > mostTicks) {
        return false;
    }
    const auto& samples = fragment.track->samples;
    return samples.empty() || samples.back().decodeTime <= fragment.decodeTime;
}

class FragmentReader
{
public:
    explicit FragmentReader(FrugalFile& file) : m_file(file) {}

    std::optional<FragmentedMovie> Read();

private:
    bool ReadMovieBox(const Box& box, uint64_t offset);
    bool ReadTrackExtends(const Box& box);
    bool ReadMovieFragment(const Box& box, uint64_t offset);
    bool ReadTrackFragment(const Box& box, uint64_t movieFragment);
    bool ReadTrackFragmentHeader(ByteReader& reader, TrackFragment& fragment);
    bool ReadTrackRun(ByteReader& reader, TrackFragment& fragment);
    ByteReader Content(const Box& box) { return ByteReader(ReadContent(m_file, box, mostInBox)); }
    FragmentedTrack* TrackOf(uint32_t id);

    FrugalFile& m_file;
    FragmentedMovie m_movie;
    uint64_t m_samples = 0;
};

FragmentedTrack* FragmentReader::TrackOf(uint32_t id)
{
    const auto track = std::find_if(m_movie.tracks.begin(), m_movie.tracks.end(),
                                    [id](const FragmentedTrack& each) { return each.id == id; });
    return track == m_movie.tracks.end() ? nullptr : &*track;
}

bool FragmentReader::ReadMovieBox(const Box& box, uint64_t offset)
{
    constexpr uint64_t header = 8;
    if (m_movie.movieBox.end != 0 || box.begin - offset != header) {
        return false;
    }
    m_movie.movieBox = box;
    m_movie.movieBoxOffset = offset;
    BoxWalk walk(m_file, box);
    while (const auto child = walk.Next()) {
        if (child->type != BoxType("mvex")) {
            continue;
        }
        BoxWalk extends(m_file, *child);
        while (const auto each = extends.Next()) {
            if (each->type == BoxType("trex") && !ReadTrackExtends(*each)) {
                return false;
            }
        }
    }
    return !walk.Damaged() && !m_movie.tracks.empty();
}

bool FragmentReader::ReadTrackExtends(const Box& box)
{
    ByteReader reader = Content(box);
    FragmentedTrack track;
    reader.Skip(4); // version and flags
    track.id = reader.Take32();
    reader.Skip(4); // sample description index: a recording has one per track
    track.defaults.duration = reader.Take32();
    track.defaults.size = reader.Take32();
    track.defaults.flags = reader.Take32();
    if (reader.Failed() || TrackOf(track.id) != nullptr) {
        return false;
    }
    m_movie.tracks.push_back(track);
    return true;
}

bool FragmentReader::ReadTrackFragmentHeader(ByteReader& reader, TrackFragment& fragment)
{
    const uint32_t flags = reader.Take32();
    fragment.track = TrackOf(reader.Take32());
    if (fragment.track == nullptr) {
        return false;
    }
    if ((flags & baseDataOffsetPresent) != 0) {
        fragment.dataOffset = reader.Take(8);
    }
    SampleDefaults& defaults = fragment.defaults;
    defaults = fragment.track->defaults;
    reader.Take32If((flags & sampleDescriptionIndexPresent) != 0, 0);
    defaults.duration =
        reader.Take32If((flags & defaultSampleDurationPresent) != 0, defaults.duration);
    defaults.size = reader.Take32If((flags & defaultSampleSizePresent) != 0, defaults.size);
    defaults.flags = reader.Take32If((flags & defaultSampleFlagsPresent) != 0, defaults.flags);
    return !reader.Failed();
}

// Rejects more samples than the file has bytes. That limits the memory used.
bool FragmentReader::ReadTrackRun(ByteReader& reader, TrackFragment& fragment)
{
    const uint32_t flags = reader.Take32();
    const uint32_t count = reader.Take32();
    const auto dataOffset =
        static_cast<int32_t>(reader.Take32If((flags & dataOffsetPresent) != 0, 0));
    const SampleDefaults& defaults = fragment.defaults;
    uint32_t otherFlags =
        reader.Take32If((flags & firstSampleFlagsPresent) != 0, defaults.flags); // the first's
    uint64_t offset = fragment.dataOffset + static_cast<uint64_t>(static_cast<int64_t>(dataOffset));
    for (uint32_t i = 0; i < count; ++i) {
        Sample sample;
        sample.offset = offset;
        sample.decodeTime = fragment.decodeTime;
        sample.duration = reader.Take32If((flags & sampleDurationPresent) != 0, defaults.duration);
        sample.size = reader.Take32If((flags & sampleSizePresent) != 0, defaults.size);
        const uint32_t own = reader.Take32If((flags & sampleFlagsPresent) != 0, otherFlags);
        sample.isSync = (own & isNonSyncSample) == 0;
        sample.compositionOffset =
            static_cast<int32_t>(reader.Take32If((flags & compositionOffsetPresent) != 0, 0));
        if (reader.Failed() || offset > m_file.Size() || sample.size > m_file.Size() - offset ||
            ++m_samples > std::min(mostSamples, m_file.Size())) {
            return false; // incomplete
        }
        fragment.track->samples.push_back(sample);
        otherFlags = defaults.flags;
        offset += sample.size;
        fragment.decodeTime += sample.duration;
    }
    return true;
}

bool FragmentReader::ReadTrackFragment(const Box& box, uint64_t movieFragment)
{
    TrackFragment fragment;
    fragment.dataOffset = movieFragment;
    BoxWalk walk(m_file, box);
    while (const auto child = walk.Next()) {
        ByteReader reader = Content(*child);
        if (child->type == BoxType("tfhd")) {
            if (!ReadTrackFragmentHeader(reader, fragment)) {
                return false;
            }
        } else if (child->type == BoxType("tfdt")) {
            fragment.decodeTime = reader.Take(reader.Take32() >> 24U == 1 ? 8 : 4);
        } else if (child->type == BoxType("trun") &&
                   (!MayFollow(fragment) || !ReadTrackRun(reader, fragment))) {
            return false;
        }
        if (reader.Failed()) {
            return false;
        }
    }
    return !walk.Damaged();
}

bool FragmentReader::ReadMovieFragment(const Box& box, uint64_t offset)
{
    BoxWalk walk(m_file, box);
    while (const auto child = walk.Next()) {
        if (child->type == BoxType("traf") && !ReadTrackFragment(*child, offset)) {
            return false;
        }
    }
    return !walk.Damaged();
}

std::optional<FragmentedMovie> FragmentReader::Read()
{
    BoxWalk walk(m_file, 0, m_file.Size());
    uint64_t offset = 0;
    bool fragmented = false;
    bool incomplete = false;
    while (const auto box = walk.Next()) {
        if (box->type == BoxType("moov")) {
            if (!ReadMovieBox(*box, offset)) {
                return std::nullopt;
            }
        } else if (box->type == BoxType("moof")) {
            // Only the last fragment may be incomplete; anything after it would be lost.
            if (m_movie.movieBox.end == 0 || incomplete) {
                return std::nullopt;
            }
            fragmented = true;
            incomplete = !ReadMovieFragment(*box, offset);
        }
        offset = box->end;
    }
    return fragmented && !m_file.Failed() ? std::optional(std::move(m_movie)) : std::nullopt;
}

} // namespace

std::optional<FragmentedMovie> ReadFragments(FrugalFile& file)
{
    return file.IsOpen() ? FragmentReader(file).Read() : std::nullopt;
}

std::optional<uint64_t> CompleteSize(FrugalFile& file)
{
    BoxWalk walk(file, 0, file.Size());
    uint64_t complete = 0;
    bool fragmented = false;
    bool dataMissing = false;
    while (const auto box = walk.Next()) {
        if (box->type == 0) {
            break; // zeros that the file system has put behind the end
        }
        if (box->type == BoxType("moof")) {
            dataMissing = true;
        } else if (box->type == BoxType("mdat")) {
            fragmented = fragmented || dataMissing;
            dataMissing = false;
        }
        complete = dataMissing ? complete : box->end;
    }
    const bool ends = fragmented && !file.Failed() && complete < file.Size();
    return ends ? std::optional(complete) : std::nullopt;
}

} // namespace tool
