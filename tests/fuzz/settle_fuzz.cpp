// A fragmented movie, like a recording in progress: finding its samples, and settling the file.
#include "tests/fuzz/target.h"
#include "tool/mp4/fragments.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"
#include "tool/mp4/settle.h"

#include <limits>

namespace {

void CheckSamples(const std::string& path)
{
    tool::FrugalFile file(path, std::numeric_limits<uint64_t>::max());
    const auto movie = tool::ReadFragments(file);
    if (!movie) {
        return;
    }
    Require(movie->movieBox.end <= file.Size() &&
                movie->movieBoxOffset + 8 <= movie->movieBox.begin,
            "the movie's box lies in the file");
    for (const tool::FragmentedTrack& track : movie->tracks) {
        uint64_t time = 0;
        for (const tool::Sample& sample : track.samples) {
            Require(sample.offset <= file.Size() && sample.size <= file.Size() - sample.offset,
                    "a sample lies in the file");
            Require(sample.decodeTime >= time, "times never go back");
            time = sample.decodeTime;
        }
    }
}

void CheckCompleteSize(const std::string& path)
{
    tool::FrugalFile file(path, std::numeric_limits<uint64_t>::max());
    const auto complete = tool::CompleteSize(file);
    Require(!complete || (*complete > 0 && *complete < file.Size()),
            "the complete fragments are less than the file");
}

void CheckSettled(const ScratchFile& scratch, const QByteArray& before)
{
    const bool settled = tool::SettleMovie(scratch.Path());
    const QByteArray after = scratch.Read();
    if (!settled) {
        Require(after == before, "what is not fragmented stays as it is");
        return;
    }
    Require(after.size() > before.size() && after.size() < 100 * before.size() + 65536,
            "the index is added, and is no larger than its samples are worth");
    qsizetype changed = 0;
    for (qsizetype i = 0; i < before.size(); ++i) {
        changed += after[i] != before[i] ? 1 : 0;
    }
    Require(changed <= 16, "one header is written over, and nothing else");
    tool::FrugalFile file(scratch.Path(), std::numeric_limits<uint64_t>::max());
    tool::ReadMovie(file);
    Require(!tool::SettleMovie(scratch.Path()), "a movie is settled once");
    Require(scratch.Read() == after, "a settled movie stays as it is");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const ScratchFile file("movie.mp4");
    file.Write(data, size);
    CheckSamples(file.Path());
    CheckCompleteSize(file.Path());
    CheckSettled(file, QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    return 0;
}
