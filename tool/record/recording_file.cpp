#include "tool/record/recording_file.h"

#include "tool/mp4/boxes.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/settle.h"
#include "tool/system/sync_data.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

// Whether there is anything but headers in the file, as far as it can be read.
bool MayHoldMedia(const std::string& path)
{
    constexpr uint64_t allowance = 1024; // a few box headers
    FrugalFile file(path, allowance);
    BoxWalk walk(file, 0, file.Size());
    while (const auto box = walk.Next()) {
        if (box->type == BoxType("moof") || (box->type == BoxType("mdat") && box->Size() > 0)) {
            return true;
        }
    }
    return walk.Damaged();
}

} // namespace

RecordingFile::RecordingFile(std::string path, Descriptor file)
    : m_path(std::move(path)),
      m_file(std::move(file))
{
}

std::optional<RecordingFile> RecordingFile::Create(const std::string& path)
{
    Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.IsOpen()) {
        return std::nullopt;
    }
    return RecordingFile(path, std::move(file));
}

off_t RecordingFile::Size() const
{
    struct stat status = {};
    return fstat(Number(), &status) == 0 ? status.st_size : 0;
}

void RecordingFile::SyncName() const
{
    const std::filesystem::path folder = std::filesystem::path(m_path).parent_path();
    const Descriptor opened(
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    fsync(opened.Number());
}

void RecordingFile::Sync()
{
    struct stat status = {};
    if (fstat(Number(), &status) == 0 && status.st_size != m_nSynced && SyncData(Number())) {
        m_nSynced = status.st_size;
    }
}

void RecordingFile::Finish() const
{
    if (HasContent() && (SettleMovie(Name()) || MayHoldMedia(Name()))) {
        return;
    }
    struct stat own = {};
    struct stat named = {};
    if (fstat(Number(), &own) == 0 && lstat(m_path.c_str(), &named) == 0 &&
        own.st_dev == named.st_dev && own.st_ino == named.st_ino) {
        unlink(m_path.c_str());
    }
}

} // namespace tool
