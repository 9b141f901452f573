#pragma once

// Stands in for the system header of the same name where there is none: as much of a kernel queue
// as waits for the ends of processes. Errors are those of macOS.

#include <cstdint>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

constexpr int16_t EVFILT_PROC = -5;
constexpr uint16_t EV_ADD = 1;
constexpr uint32_t NOTE_EXIT = 0x80000000;

struct kevent
{
    uintptr_t ident;
    int16_t filter;
    uint16_t flags;
    uint32_t fflags;
    intptr_t data;
    void* udata;
};

inline void EV_SET(struct kevent* event, pid_t process, int16_t filter, uint16_t flags,
                   uint32_t fflags, intptr_t data, void* udata)
{
    *event = {static_cast<uintptr_t>(process), filter, flags, fflags, data, udata};
}

inline int kqueue()
{
    return epoll_create1(EPOLL_CLOEXEC);
}

// Never waits for a limited time: the last argument, here the only one of its kind, is null.
inline int kevent(int queue, const struct kevent* changes, int changed, struct kevent* events,
                  int most, const timespec* /*time*/)
{
    for (int i = 0; i < changed; ++i) {
        const long process = syscall(SYS_pidfd_open, changes[i].ident, 0);
        epoll_event wish{};
        wish.events = EPOLLIN;
        wish.data.u64 = changes[i].ident;
        if (process < 0 || epoll_ctl(queue, EPOLL_CTL_ADD, static_cast<int>(process), &wish) != 0) {
            return -1;
        }
    }
    epoll_event ended{};
    const int count = most > 0 ? epoll_wait(queue, &ended, 1, -1) : 0;
    if (count == 1) {
        *events = {ended.data.u64, EVFILT_PROC, 0, NOTE_EXIT, 0, nullptr};
    }
    return count;
}
