// Simulates a disk that fills up. The file named by LUMENFOLD_FAKE_FREE_SPACE has the number of
// free bytes and is read at every call. Without the file or a number in it, the real value is used.
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <sys/statvfs.h>

namespace {

void Fake(struct statvfs* status)
{
    const char* name = std::getenv("LUMENFOLD_FAKE_FREE_SPACE");
    unsigned long long bytes = 0;
    if (name != nullptr && std::ifstream(name) >> bytes) {
        status->f_frsize = 1;
        status->f_bavail = bytes;
    }
}

} // namespace

extern "C" int statvfs(const char* path, struct statvfs* status) noexcept
{
    const auto real =
        reinterpret_cast<int (*)(const char*, struct statvfs*)>(dlsym(RTLD_NEXT, "statvfs"));
    const int result = real(path, status);
    if (result == 0) {
        Fake(status);
    }
    return result;
}

extern "C" int fstatvfs(int file, struct statvfs* status) noexcept
{
    const auto real = reinterpret_cast<int (*)(int, struct statvfs*)>(dlsym(RTLD_NEXT, "fstatvfs"));
    const int result = real(file, status);
    if (result == 0) {
        Fake(status);
    }
    return result;
}
