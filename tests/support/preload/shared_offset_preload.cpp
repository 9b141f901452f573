// Opens /dev/fd/N as macOS does: as a duplicate that shares its place in the file with N, and not
// anew. Access that N does not allow is refused.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

int Duplicate(int number, int flags)
{
    const int allowed = fcntl(number, F_GETFL);
    if (allowed < 0) {
        return -1;
    }
    if ((allowed & O_ACCMODE) != O_RDWR && (allowed & O_ACCMODE) != (flags & O_ACCMODE)) {
        errno = EACCES;
        return -1;
    }
    return fcntl(number, (flags & O_CLOEXEC) != 0 ? F_DUPFD_CLOEXEC : F_DUPFD, 0);
}

int Open(const char* name, const char* path, int flags, mode_t mode)
{
    constexpr const char* folder = "/dev/fd/";
    if (std::strncmp(path, folder, std::strlen(folder)) == 0) {
        return Duplicate(std::atoi(path + std::strlen(folder)), flags);
    }
    const auto real = reinterpret_cast<int (*)(const char*, int, ...)>(dlsym(RTLD_NEXT, name));
    return real(path, flags, mode);
}

mode_t ModeOf(int flags, va_list rest)
{
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
}

} // namespace

extern "C" int open(const char* path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return Open("open", path, flags, mode);
}

extern "C" int open64(const char* path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    return Open("open64", path, flags, mode);
}
