#include "tool/mp4/settle.h"

#include "tool/mp4/box_writer.h"
#include "tool/mp4/fragments.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie_box.h"
#include "tool/system/descriptor.h"
#include "tool/system/sync_data.h"

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <string_view>
#include <unistd.h>

namespace tool {
namespace {

class WritableFile
{
public:
    explicit WritableFile(const std::string& path)
        : m_file(open(path.c_str(), O_WRONLY | O_CLOEXEC))
    {
    }

    bool Write(std::string_view bytes, uint64_t offset) const
    {
        while (!bytes.empty()) {
            const ssize_t count =
                pwrite(m_file.Number(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return false;
            }
            bytes.remove_prefix(static_cast<size_t>(count));
            offset += static_cast<uint64_t>(count);
        }
        return true;
    }

    bool Sync() const { return SyncData(m_file.Number()); }
    bool SyncForGood() const { return SyncToDisk(m_file.Number()); }
    bool Shorten(uint64_t size) const
    {
        return ftruncate(m_file.Number(), static_cast<off_t>(size)) == 0;
    }

private:
    Descriptor m_file;
};

// The file is valid at every moment. If there is no room for the box, the file stays as it was.
bool AppendMovieBox(const WritableFile& target, const FragmentedMovie& movie,
                    const std::string& movieBox, uint64_t end)
{
    // Overwrites the header of the old movie box with that of an mdat with a 64-bit size.
    std::string header;
    AppendNumber(header, 1, 4);
    AppendNumber(header, BoxType("mdat"), 4);
    AppendNumber(header, end - movie.movieBoxOffset, 8);
    if (!target.Write(movieBox, end) || !target.Sync() ||
        !target.Write(header, movie.movieBoxOffset)) {
        target.Shorten(end);
        return false;
    }
    return target.SyncForGood();
}

} // namespace

bool SettleMovie(const std::string& path)
{
    FrugalFile file(path, std::numeric_limits<uint64_t>::max());
    const auto movie = ReadFragments(file);
    const std::string movieBox = movie ? MovieBox(file, *movie) : std::string();
    if (movieBox.empty()) {
        return false;
    }
    const WritableFile target(path);
    if (AppendMovieBox(target, *movie, movieBox, file.Size())) {
        return true;
    }
    if (const auto complete = CompleteSize(file)) {
        target.Shorten(*complete); // an incomplete fragment keeps players from opening the file
    }
    return false;
}

} // namespace tool
