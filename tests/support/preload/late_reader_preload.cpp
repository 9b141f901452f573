// Qt's threads that read what the Wayland compositor sends are late, as on a busy machine.
#include <array>
#include <chrono>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <thread>

using Wait = decltype(&pthread_cond_wait);

// On some processors there is an older version too, which waits for another kind of condition and
// is what dlsym() finds.
static Wait Real()
{
    void* found = dlvsym(RTLD_NEXT, "pthread_cond_wait", "GLIBC_2.3.2");
    return reinterpret_cast<Wait>(found != nullptr ? found : dlsym(RTLD_NEXT, "pthread_cond_wait"));
}

extern "C" int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex)
{
    static const Wait real = Real();
    const int result = real(condition, mutex);
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    if (std::strcmp(name.data(), "WaylandEventThr") == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return result;
}
