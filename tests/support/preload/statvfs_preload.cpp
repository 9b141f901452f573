// Simulates a disk that fills up. The file named by LUMENFOLD_FAKE_FREE_SPACE has the number of
// free bytes and is read at every call. Without the file or a number in it, the real value is used.
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <sys/statvfs.h>

extern "C" int statvfs(const char* path, struct statvfs* status) noexcept
{
    const auto real =
        reinterpret_cast<int (*)(const char*, struct statvfs*)>(dlsym(RTLD_NEXT, "statvfs"));
    const int result = real(path, status);
    const char* name = std::getenv("LUMENFOLD_FAKE_FREE_SPACE");
    unsigned long long bytes = 0;
    if (result == 0 && name != nullptr && std::ifstream(name) >> bytes) {
        status->f_frsize = 1;
        status->f_bavail = bytes;
    }
    return result;
}
