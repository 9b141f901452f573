#include "tool/record/sound_feeder.h"

#include "tool/record/companion.h"
#include "tool/sound/pulse/sound_reader.h"
#include "tool/sound/sound_track.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tool {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// The delay with which sound is written. Sound that arrives later than this is lost.
constexpr int delayMs = 60;
// Silence in the pipe before ffmpeg opens it, which becomes the first 23 ms of the sound.
constexpr int64_t preparedFrames = 1024;
constexpr int pipeBytes = 1 << 20;

class Feeder
{
public:
    Feeder(const FeederPlan& plan, int pipe)
        : m_nPipe(pipe),
          m_nRate(plan.rate),
          m_pStart(plan.start),
          m_tracks(plan.sources.size(), SoundTrack(plan.rate)),
          m_reader(plan.sources, plan.rate,
                   {[this](size_t source, SteadyTime captured, std::span<const int16_t> stereo) {
                        Hear(source, captured, stereo);
                    },
                    [this](size_t source) { m_tracks[source].Restart(); }})
    {
    }

    void Run()
    {
        if (!WaitForReader()) {
            return;
        }
        fcntl(m_nPipe, F_SETPIPE_SZ, pipeBytes); // so that a busy ffmpeg does not block it
        while (!PicturesEnded() && Emit()) {
            m_reader.Wait(20ms);
        }
    }

private:
    // ffmpeg would continue with sound only.
    bool PicturesEnded() const { return m_pStart != nullptr && m_pStart->GrabberEnded(); }

    // The sound starts with the first frame. If ffmpeg grabs the screen itself, it opens this pipe
    // right afterwards and reads, so both start together.
    void Start(SteadyTime moment)
    {
        if (!m_bStarted) {
            m_start = moment;
            m_nGiven = preparedFrames;
            m_bStarted = true;
        }
    }

    // Returns false if ffmpeg is gone.
    bool WaitForReader()
    {
        const std::array<int16_t, preparedFrames * 2> silence{};
        if (write(m_nPipe, silence.data(), sizeof silence) != sizeof silence) {
            return false;
        }
        int unread = sizeof silence;
        while (unread == sizeof silence) {
            m_reader.Wait(1ms);
            pollfd pipe{m_nPipe, 0, 0};
            if (poll(&pipe, 1, 0) < 0 || (pipe.revents & POLLERR) != 0 ||
                ioctl(m_nPipe, FIONREAD, &unread) != 0 || PicturesEnded()) {
                return false;
            }
            if (const auto moment = m_pStart != nullptr ? m_pStart->Get() : std::nullopt) {
                Start(*moment);
            }
        }
        Start(Clock::now());
        return true;
    }

    void Hear(size_t source, SteadyTime captured, std::span<const int16_t> stereo)
    {
        if (m_bStarted) {
            const auto since =
                std::chrono::duration_cast<std::chrono::microseconds>(captured - m_start).count();
            m_tracks[source].Put(since * m_nRate / 1000000, stereo, m_nGiven);
        }
    }

    // Writes what is due, as far as the pipe takes it. Returns false if ffmpeg has closed the pipe.
    bool Emit()
    {
        const int64_t pieceFrames = m_nRate / 100;
        const auto elapsed =
            std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - m_start).count();
        const int64_t due = FramesDue(elapsed, m_nRate, delayMs);
        while (WriteRest()) {
            if (m_nGiven + pieceFrames > due) {
                return true;
            }
            std::vector<int32_t> sum(static_cast<size_t>(pieceFrames) * 2);
            for (const SoundTrack& track : m_tracks) {
                track.AddTo(m_nGiven, sum);
            }
            m_rest = Saturated(sum);
            m_nWritten = 0;
            m_nGiven += pieceFrames;
        }
        return errno == EAGAIN || errno == EINTR;
    }

    // Returns true if everything is written, else false with errno.
    bool WriteRest()
    {
        const size_t size = m_rest.size() * sizeof(int16_t);
        while (m_nWritten < size) {
            const auto* bytes = reinterpret_cast<const char*>(m_rest.data());
            const ssize_t count = write(m_nPipe, bytes + m_nWritten, size - m_nWritten);
            if (count < 0) {
                return false;
            }
            m_nWritten += static_cast<size_t>(count);
        }
        return true;
    }

    int m_nPipe;
    int m_nRate;
    const RecordingStart* m_pStart;
    bool m_bStarted = false;
    SteadyTime m_start;
    int64_t m_nGiven = 0;        // frames handed out
    std::vector<int16_t> m_rest; // handed out, but not completely written
    size_t m_nWritten = 0;       // bytes of m_rest that are written
    std::vector<SoundTrack> m_tracks;
    SoundReader m_reader;
};

} // namespace

int StartSoundFeeder(const FeederPlan& plan)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return -1;
    }
    const bool started = StartCompanion({ends[1]}, [&plan](const auto& kept) {
        const int pipe = kept.front();
        fcntl(pipe, F_SETFL, O_WRONLY | O_NONBLOCK);
        fcntl(pipe, F_SETFD, FD_CLOEXEC);
        Feeder(plan, pipe).Run();
    });
    const int reason = errno;
    close(ends[1]);
    if (!started || fcntl(ends[0], F_SETFD, 0) != 0) {
        close(ends[0]);
        errno = reason;
        return -1;
    }
    return ends[0];
}

} // namespace tool
