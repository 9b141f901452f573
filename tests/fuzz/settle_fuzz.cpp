// A fragmented movie, like a recording in progress: finding its samples, and settling the file.
#include "tests/fuzz/target.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"
#include "tool/mp4/movie_pieces.h"
#include "tool/mp4/settle.h"

#include <limits>

namespace {

void CheckSamples(const std::string& path)
{
    tool::FrugalFile file(path, std::numeric_limits<uint64_t>::max());
    const auto movie = tool::ReadPieces(file);
    if (!movie) {
        return;
    }
    Require(movie->movie.end <= file.Size() && movie->place + 8 <= movie->movie.begin,
            "the movie's box lies in the file");
    for (const tool::PiecedTrack& track : movie->tracks) {
        uint64_t time = 0;
        for (const tool::Sample& sample : track.samples) {
            Require(sample.place <= file.Size() && sample.size <= file.Size() - sample.place,
                    "a sample lies in the file");
            Require(sample.time >= time, "times never go back");
            time = sample.time;
        }
    }
}

void CheckWholePart(const std::string& path)
{
    tool::FrugalFile file(path, std::numeric_limits<uint64_t>::max());
    const auto whole = tool::WholePart(file);
    Require(!whole || (*whole > 0 && *whole < file.Size()), "a part is less than the whole");
}

void CheckSettled(const ScratchFile& scratch, const QByteArray& before)
{
    const bool settled = tool::SettleMovie(scratch.Path());
    const QByteArray after = scratch.Read();
    if (!settled) {
        Require(after == before, "what is no movie in pieces stays as it is");
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
    CheckWholePart(file.Path());
    CheckSettled(file, QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    return 0;
}
