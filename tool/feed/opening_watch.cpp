#include "tool/feed/opening_watch.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

namespace tool {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto lineInterval = 500ms;

} // namespace

OpeningWatch::OpeningWatch(int keyboard)
    : m_keyboard(keyboard),
      m_nextLine(Clock::now() + lineInterval)
{
}

bool OpeningWatch::Wait(pollfd& descriptor, SteadyTime until)
{
    std::array<pollfd, 2> events{descriptor, {m_keyboard.Number(), POLLIN, 0}};
    while (!m_keyboard.HasAskedForEnd()) {
        events[1].fd = m_keyboard.Number();
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(std::min(until, m_nextLine) -
                                                                       Clock::now());
        const int ready = poll(events.data(), events.size(),
                               static_cast<int>(std::max<int64_t>(left.count(), 0)));
        if (ready > 0 && events[1].revents != 0) {
            m_keyboard.Read();
        }
        if (ready > 0 && events[0].revents != 0) {
            descriptor.revents = events[0].revents;
            break;
        }
        if (Clock::now() >= until) {
            break;
        }
        if (Clock::now() >= m_nextLine) {
            std::fputs("Waiting for the desktop to let the screen be recorded\r", stderr);
            std::fflush(stderr); // PipeWire's library makes it wait for the ends of lines
            m_nextLine += lineInterval;
        }
    }
    return !m_keyboard.HasAskedForEnd();
}

} // namespace tool
