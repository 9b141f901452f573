// Simulates a dead network share: LUMENFOLD_DEAD_FOLDER never answers.
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <unistd.h>

extern "C" DIR* opendir(const char* path)
{
    const char* dead = std::getenv("LUMENFOLD_DEAD_FOLDER");
    while (dead != nullptr && std::strcmp(path, dead) == 0) {
        pause();
    }
    static const auto real = reinterpret_cast<DIR* (*)(const char*)>(dlsym(RTLD_NEXT, "opendir"));
    return real(path);
}
