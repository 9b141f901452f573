#include "util/disk.h"

#include "util/free_bytes.h"
#include "util/wide_text.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr unsigned kHalfBits = 32;

} // namespace

int rsb_getFreeSpace(char* path, int /*ignored*/, unsigned int* high, unsigned int* low)
{
    *high = 0;
    *low = 0;
    if (path[0] != '/') {
        return 0;
    }
    std::optional<unsigned long long> bytes;
    while (!(bytes = FreeBytesAt(path))) {
        if (path[1] == '\0') {
            return -1;
        }
        char* slash = std::strrchr(path, '/');
        *(slash == path ? slash + 1 : slash) = '\0';
    }
    *low = static_cast<unsigned int>(*bytes);
    *high = static_cast<unsigned int>(*bytes >> kHalfBits);
    return 0;
}

int rsb_statH(int fd, STRUCT_RSB_FILE_ATTR* attr)
{
    struct stat status = {};
    if (fstat(fd, &status) != 0) {
        return -1;
    }
    *attr = {static_cast<unsigned long long>(status.st_size), status.st_mode, status.st_atime,
             status.st_mtime, status.st_ctime};
    return 0;
}

int rsb_getFileSizeH(int fd, int* low, int* high)
{
    STRUCT_RSB_FILE_ATTR attr = {};
    if (rsb_statH(fd, &attr) != 0) {
        return -1;
    }
    *low = static_cast<int>(attr.size & 0xffffffffU);
    *high = static_cast<int>(attr.size >> kHalfBits);
    return 0;
}

int GetFileByteSize(const wchar_t* path, unsigned long long& size)
{
    std::array<char, 260> name{};
    if (inner_uni2str(path, name.data(), static_cast<int>(name.size())) != 0) {
        return EILSEQ;
    }
    const int fd = open(name.data(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return errno;
    }
    STRUCT_RSB_FILE_ATTR attr = {};
    const int error = rsb_statH(fd, &attr) == 0 ? 0 : errno;
    close(fd);
    if (error == 0) {
        size = attr.size;
    }
    return error;
}
