// Qt's threads that read what the Wayland compositor sends are late, as on a busy machine.
#include <array>
#include <chrono>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <thread>

extern "C" int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex)
{
    // The oldest version of the function waits for another kind of condition.
    static const auto real = reinterpret_cast<decltype(&pthread_cond_wait)>(
        dlvsym(RTLD_NEXT, "pthread_cond_wait", "GLIBC_2.3.2"));
    const int result = real(condition, mutex);
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    if (std::strcmp(name.data(), "WaylandEventThr") == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return result;
}
