#include "tool/record/screen_feeder.h"

#include "tool/record/capture_command.h"
#include "tool/record/companion.h"
#include "tool/record/picture_pipe.h"
#include "tool/screen/screen.h"
#include "tool/screen/screen_picture.h"

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

namespace tool {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Outcome = Screen::Outcome;

constexpr auto patience = 3s; // for the server's first answers; measured: 6 ms
constexpr auto firstPatience = 1s;

class Feeder
{
public:
    Feeder(const ScreenFeederPlan& plan, Screen& screen, int pipe)
        : m_plan(plan),
          m_screen(screen),
          m_nPipe(pipe),
          m_pictures(pipe, YuvBytes(plan.area.width, plan.area.height))
    {
    }

    void Run()
    {
        if (m_screen.Next(Clock::now() + firstPatience) != Outcome::Taken || !Convert()) {
            return;
        }
        m_pictures.Add(0); // used if the server does not answer at the start
        if (m_plan.start != nullptr) {
            m_plan.start->NameGrabber();
        }
        if (!WaitForReader()) {
            return;
        }
        const SteadyTime start = Clock::now();
        if (m_plan.start != nullptr) {
            m_plan.start->Begin(start);
        }
        const PictureClock clock(m_plan.rate, start);
        int64_t next = 0;
        while (next >= 0 && m_pictures.Work(clock.Due(next))) {
            next = Fill(clock, next);
        }
        // The screen is gone. Write the frames that are still queued.
        while (m_pictures.HasWork() && m_pictures.Work(Clock::now() + 10ms)) {
        }
    }

private:
    // Waits until ffmpeg opens the pipe and reads the skipped bytes. The recording starts at that
    // moment; frames grabbed earlier would have to be buffered. Returns false if ffmpeg is gone.
    bool WaitForReader() const
    {
        const std::array<char, skippedBytes> nothing{};
        if (write(m_nPipe, nothing.data(), nothing.size()) != skippedBytes) {
            return false;
        }
        int unread = skippedBytes;
        while (unread == skippedBytes) {
            std::this_thread::sleep_for(1ms);
            pollfd pipe{m_nPipe, 0, 0};
            if (poll(&pipe, 1, 0) < 0 || (pipe.revents & POLLERR) != 0 ||
                ioctl(m_nPipe, FIONREAD, &unread) != 0) {
                return false;
            }
        }
        return true;
    }

    // Returns false if there is no room for the frame.
    bool Convert()
    {
        uint8_t* picture = m_pictures.Blank();
        if (picture != nullptr) {
            m_screen.Write(picture);
        }
        return picture != nullptr;
    }

    // Fills the due place with a new frame, and missed places before it with the previous one.
    // Returns the next place, or -1 if the screen is gone.
    int64_t Fill(const PictureClock& clock, int64_t next)
    {
        const int64_t place = clock.PlaceAt(Clock::now(), next);
        const Outcome outcome = m_screen.Next(clock.Due(place + 1));
        m_pictures.Repeat(place - next);
        if (outcome == Outcome::Lost) {
            return -1;
        }
        m_bUnwritten = m_bUnwritten || outcome == Outcome::Taken;
        if (m_bUnwritten && outcome != Outcome::Waiting && Convert()) {
            m_pictures.Add();
            m_bUnwritten = false;
        } else {
            m_pictures.Repeat(1);
        }
        return place + 1;
    }

    const ScreenFeederPlan& m_plan;
    Screen& m_screen;
    int m_nPipe;
    PicturePipe m_pictures;
    bool m_bUnwritten = false; // there was no room for the last picture
};

} // namespace

std::optional<int> StartScreenFeeder(const ScreenFeederPlan& plan)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    const bool started = StartCompanion({ends[1]}, [&plan](const auto& kept) {
        const int pipe = kept.front();
        fcntl(pipe, F_SETFL, O_WRONLY | O_NONBLOCK);
        if (const auto screen = OpenScreen(plan.area)) {
            Feeder(plan, *screen, pipe).Run();
        }
    });
    close(ends[1]);
    // Data in the pipe means the child can grab the screen; end of file means it cannot.
    pollfd answer{ends[0], POLLIN, 0};
    const auto time = std::chrono::milliseconds(patience).count();
    if (!started || poll(&answer, 1, static_cast<int>(time)) != 1 ||
        (answer.revents & POLLIN) == 0 || fcntl(ends[0], F_SETFD, 0) != 0) {
        close(ends[0]);
        return std::nullopt;
    }
    return ends[0];
}

} // namespace tool
