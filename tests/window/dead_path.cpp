// In place of the C library's.
#include "tests/window/dead_path.h"

#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

template <class Function>
Function RealCall(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {
DIR* opendir(const char* path)
{
    DeadPath::WaitForAnswer(path);
    static const auto real = RealCall<DIR* (*)(const char*)>("opendir");
    return real(path);
}

int statx(int folder, const char* path, int flags, unsigned mask, struct statx* status)
{
    DeadPath::WaitForAnswer(path);
    static const auto real =
        RealCall<int (*)(int, const char*, int, unsigned, struct statx*)>("statx");
    return real(folder, path, flags, mask, status);
}

int statvfs(const char* path, struct statvfs* status) noexcept
{
    DeadPath::WaitForAnswer(path);
    static const auto real = RealCall<int (*)(const char*, struct statvfs*)>("statvfs");
    return real(path, status);
}

int mkdir(const char* path, mode_t mode) noexcept
{
    DeadPath::WaitForAnswer(path);
    static const auto real = RealCall<int (*)(const char*, mode_t)>("mkdir");
    return real(path, mode);
}
}
