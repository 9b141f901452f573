#include "tool/edit/part_file.h"

#include "tool/mp4/boxes.h"
#include "tool/mp4/frugal_file.h"
#include "tool/system/rename_free.h"
#include "tool/system/sync_data.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>

namespace tool {
namespace {

constexpr int mostNames = 1000;
constexpr mode_t usualMode = 0666; // less the umask
constexpr std::string_view mp4 = "mp4";

struct Muxer
{
    std::string_view extension;
    std::string_view name;
};

constexpr std::array<Muxer, 5> muxers = {
    {{".mov", "mov"}, {".mkv", "matroska"}, {".webm", "webm"}, {".avi", "avi"}, {".ts", "mpegts"}}};

// Where the extension of a file name begins.
size_t ExtensionOf(const std::string& name)
{
    const size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name.size() : dot;
}

} // namespace

std::string MuxerFor(const std::string& path)
{
    const std::string extension = path.substr(ExtensionOf(path));
    const auto* const found = std::find_if(muxers.begin(), muxers.end(), [&](const Muxer& muxer) {
        return muxer.extension == extension;
    });
    return std::string(found == muxers.end() ? mp4 : found->name);
}

std::string NumberedName(const std::string& name, int number)
{
    std::string numbered = name;
    if (number > 0) {
        numbered.insert(ExtensionOf(name), " (" + std::to_string(number) + ")");
    }
    return numbered;
}

PartFile::PartFile(const std::string& destination)
    : m_folderPath(destination.substr(0, destination.rfind('/') + 1)),
      m_name(destination.substr(m_folderPath.size()))
{
    m_folder = Descriptor(open(m_folderPath.empty() ? "." : m_folderPath.c_str(),
                               O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (m_name.empty() || m_name == "." || m_name == "..") {
        errno = EISDIR;
    } else if (m_folder.IsOpen()) {
        Create();
    }
    if (!IsOpen()) {
        m_problem = destination + " cannot be written: " + std::strerror(errno);
        return;
    }
    GiveToFolderOwner();
}

void PartFile::Create()
{
    std::string base = m_name;
    for (int number = 0; number < mostNames && !IsOpen(); ++number) {
        m_part = NumberedName(base + ".part", number);
        m_file = Descriptor(openat(m_folder.Number(), m_part.c_str(),
                                   O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, usualMode));
        if (!IsOpen() && errno == ENAMETOOLONG && base == m_name) {
            base = ".lumenfold";
            number = -1;
        } else if (!IsOpen() && errno != EEXIST) {
            return;
        }
    }
}

// The recorder does this for files that it finds when a job ends. This one may appear later.
void PartFile::GiveToFolderOwner() const
{
    struct stat folder = {};
    if (geteuid() == 0 && fstat(m_folder.Number(), &folder) == 0 && folder.st_uid != 0) {
        // Has no effect on a file system without owners.
        [[maybe_unused]] const int result = fchown(m_file.Number(), folder.st_uid, folder.st_gid);
    }
}

uint64_t PartFile::Size() const
{
    struct stat status = {};
    return fstat(m_file.Number(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

std::string PartFile::InheritedPath() const
{
    return "/dev/fd/" + std::to_string(m_file.Number());
}

// ffmpeg up to 5.1 ends well even if it could not write the index.
bool PartFile::IsMovie() const
{
    if (MuxerFor(m_name) != mp4) {
        return Size() > 0;
    }
    constexpr uint64_t allowance = 1024; // a few box headers
    FrugalFile file(InheritedPath(), allowance);
    bool hasIndex = false;
    bool hasContent = false;
    BoxWalk walk(file, 0, file.Size());
    while (const auto box = walk.Next()) {
        hasIndex = hasIndex || box->type == BoxType("moov");
        hasContent = hasContent || (box->type == BoxType("mdat") && box->Size() > 0);
    }
    return hasIndex && hasContent && !walk.Damaged();
}

bool PartFile::Sync() const
{
    return SyncToDisk(m_file.Number());
}

std::string PartFile::Publish()
{
    for (int number = 0; number < mostNames; ++number) {
        const std::string name = NumberedName(m_name, number);
        if (RenameToFree(m_folder.Number(), m_part, name)) {
            fsync(m_folder.Number());
            m_part.clear();
            return m_folderPath + name;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return {};
}

void PartFile::Remove()
{
    struct stat ours = {};
    struct stat named = {};
    if (!m_part.empty() && fstat(m_file.Number(), &ours) == 0 &&
        fstatat(m_folder.Number(), m_part.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
        ours.st_dev == named.st_dev && ours.st_ino == named.st_ino) {
        unlinkat(m_folder.Number(), m_part.c_str(), 0);
    }
    m_part.clear();
}

} // namespace tool
