#include "tool/mp4/sample_tables.h"

#include "tool/mp4/box_writer.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace tool {
namespace {

constexpr uint64_t most32 = std::numeric_limits<uint32_t>::max();

// A table of run-length encoded values, as most tables are.
class RunTable
{
public:
    void Add(uint64_t value)
    {
        if (m_runs.empty() || m_runs.back().second != value) {
            m_runs.emplace_back(0, value);
        }
        ++m_runs.back().first;
    }
    void Append(std::string& bytes, uint32_t type, uint32_t version) const
    {
        const OpenBox box(bytes, type);
        AppendNumber(bytes, static_cast<uint64_t>(version) << 24U, 4);
        AppendNumber(bytes, m_runs.size(), 4);
        for (const auto& [count, value] : m_runs) {
            AppendNumber(bytes, count, 4);
            AppendNumber(bytes, value, 4);
        }
    }

private:
    std::vector<std::pair<uint64_t, uint64_t>> m_runs;
};

bool AppendDurationsAndCompositionOffsets(std::string& bytes, const std::vector<Sample>& samples)
{
    RunTable durations;
    RunTable compositionOffsets;
    bool reordered = false;
    for (size_t i = 0; i < samples.size(); ++i) {
        const bool last = i + 1 == samples.size();
        const uint64_t duration =
            last ? samples[i].duration : samples[i + 1].decodeTime - samples[i].decodeTime;
        if (duration > most32) {
            return false;
        }
        durations.Add(duration);
        compositionOffsets.Add(static_cast<uint32_t>(samples[i].compositionOffset));
        reordered = reordered || samples[i].compositionOffset != 0;
    }
    durations.Append(bytes, BoxType("stts"), 0);
    if (reordered) {
        compositionOffsets.Append(bytes, BoxType("ctts"), 1);
    }
    return true;
}

void AppendSyncSamples(std::string& bytes, const std::vector<Sample>& samples)
{
    const auto syncSamples = std::count_if(samples.begin(), samples.end(),
                                           [](const Sample& sample) { return sample.isSync; });
    if (static_cast<size_t>(syncSamples) == samples.size()) {
        return; // without this table all samples are sync samples
    }
    const OpenBox box(bytes, BoxType("stss"));
    AppendNumber(bytes, 0, 4);
    AppendNumber(bytes, static_cast<uint64_t>(syncSamples), 4);
    for (size_t i = 0; i < samples.size(); ++i) {
        if (samples[i].isSync) {
            AppendNumber(bytes, i + 1, 4);
        }
    }
}

void AppendSampleSizes(std::string& bytes, const std::vector<Sample>& samples)
{
    const OpenBox box(bytes, BoxType("stsz"));
    AppendNumber(bytes, 0, 8); // no common size
    AppendNumber(bytes, samples.size(), 4);
    for (const Sample& sample : samples) {
        AppendNumber(bytes, sample.size, 4);
    }
}

// Contiguous samples form a chunk.
void AppendChunks(std::string& bytes, const std::vector<Sample>& samples)
{
    struct Chunk
    {
        uint64_t offset;
        uint64_t samples;
    };
    std::vector<Chunk> chunks;
    uint64_t end = 0;
    for (const Sample& sample : samples) {
        if (chunks.empty() || sample.offset != end) {
            chunks.push_back({sample.offset, 0});
        }
        ++chunks.back().samples;
        end = sample.offset + sample.size;
    }
    {
        const OpenBox box(bytes, BoxType("stsc"));
        AppendNumber(bytes, 0, 4);
        const size_t count = bytes.size();
        AppendNumber(bytes, 0, 4);
        uint64_t entries = 0;
        for (size_t i = 0; i < chunks.size(); ++i) {
            if (i == 0 || chunks[i].samples != chunks[i - 1].samples) {
                AppendNumber(bytes, i + 1, 4);
                AppendNumber(bytes, chunks[i].samples, 4);
                AppendNumber(bytes, 1, 4); // sample description index
                ++entries;
            }
        }
        ReplaceNumber(bytes, count, entries, 4);
    }
    const bool wide = end > most32;
    const OpenBox box(bytes, BoxType(wide ? "co64" : "stco"));
    AppendNumber(bytes, 0, 4);
    AppendNumber(bytes, chunks.size(), 4);
    for (const Chunk& chunk : chunks) {
        AppendNumber(bytes, chunk.offset, wide ? 8 : 4);
    }
}

} // namespace

bool AppendSampleTables(std::string& bytes, const std::vector<Sample>& samples)
{
    if (!AppendDurationsAndCompositionOffsets(bytes, samples)) {
        return false;
    }
    AppendSyncSamples(bytes, samples);
    AppendSampleSizes(bytes, samples);
    AppendChunks(bytes, samples);
    return true;
}

} // namespace tool
