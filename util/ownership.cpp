#include "util/ownership.h"

#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class Descriptor
{
public:
    explicit Descriptor(int fd) : m_nFd(fd) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_nFd >= 0) {
            close(m_nFd);
        }
    }

    int Number() const { return m_nFd; }
    bool Stat(struct stat& status) const { return m_nFd >= 0 && fstat(m_nFd, &status) == 0; }

private:
    int m_nFd;
};

} // namespace

// Opens folder and file once and uses their descriptors: the folder's owner may exchange names in
// it at any time, but must not make root change a file elsewhere.
void GiveToFolderOwner(const char* path)
{
    if (!MustGiveFiles()) {
        return;
    }
    std::string whole = path;
    while (whole.size() > 1 && whole.back() == '/') {
        whole.pop_back();
    }
    const std::size_t nameStart = whole.rfind('/') + 1; // 0 without a "/"
    const std::string folder = nameStart == 0 ? "." : whole.substr(0, nameStart);
    const Descriptor directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const Descriptor file(openat(directory.Number(), whole.c_str() + nameStart,
                                 O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat owner = {};
    struct stat made = {};
    if (!directory.Stat(owner) || !file.Stat(made)) {
        return;
    }
    const bool isPlain = S_ISDIR(made.st_mode) || (S_ISREG(made.st_mode) && made.st_nlink == 1);
    if (isPlain && made.st_uid == 0 && owner.st_uid != 0) {
        // Has no effect on a file system without owners.
        [[maybe_unused]] const int result = fchown(file.Number(), owner.st_uid, owner.st_gid);
    }
}

bool MustGiveFiles()
{
    return geteuid() == 0;
}
