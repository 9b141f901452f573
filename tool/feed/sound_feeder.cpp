#include "tool/feed/sound_feeder.h"

#include "tool/sound/pulse/sound_reader.h"
#include "tool/sound/sound_track.h"
#include "tool/system/pipe.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

using namespace std::chrono_literals;
using Clock = SteadyTime::clock;

// The delay with which sound is written. Sound that arrives later than this is lost.
constexpr auto delay = 60ms;
// Silence in the pipe before ffmpeg opens it, which becomes the first 23 ms of the sound.
constexpr int64_t preparedFrames = 1024;
constexpr size_t pipeBytes = 1 << 20;

// The sound is mixed and written in pieces of 10 ms.
int64_t PieceFrames(int rate)
{
    return rate / 100;
}

} // namespace

struct SoundFeeder::Private
{
    Private(const SoundPlan& plan, Descriptor outlet, const RecordingTime& times)
        : pipe(std::move(outlet)),
          rate(plan.rate),
          time(times),
          tracks(plan.sources.size(), SoundTrack(plan.rate)),
          reader(plan.sources, plan.rate,
                 {[this](size_t source, SteadyTime captured, std::span<const int16_t> stereo) {
                      Hear(source, captured, stereo);
                  },
                  [this](size_t source) { tracks[source].Restart(); }})
    {
    }

    bool WaitForReader();
    void Start(SteadyTime moment);
    void Hear(size_t source, SteadyTime captured, std::span<const int16_t> stereo);
    int64_t FrameAt(SteadyTime moment) const;
    int64_t FramesDueNow() const;
    bool IsComplete() const;
    bool Emit();
    bool WriteRest();

    Descriptor pipe;
    int rate;
    const RecordingTime& time;
    std::optional<SteadyTime> start;
    int64_t given = 0;         // frames handed out
    std::vector<int16_t> rest; // handed out, but not completely written
    size_t written = 0;        // bytes of `rest` that are written
    std::vector<SoundTrack> tracks;
    SoundReader reader;
};

// The sound starts with the first frame. If ffmpeg grabs the screen itself, it opens this pipe
// right afterwards and reads, so both start together.
void SoundFeeder::Private::Start(SteadyTime moment)
{
    if (!start) {
        start = moment;
        given = preparedFrames;
    }
}

// Returns false if ffmpeg is gone, or the recording ended before it began.
bool SoundFeeder::Private::WaitForReader()
{
    const std::array<int16_t, preparedFrames * 2> silence{};
    if (write(pipe.Number(), silence.data(), sizeof silence) != sizeof silence) {
        return false;
    }
    auto unread = UnreadBytes(pipe);
    while (unread == sizeof silence && !time.End()) {
        reader.Wait(1ms);
        unread = UnreadBytes(pipe);
        if (const auto moment = time.Start()) {
            Start(*moment);
        }
    }
    if (!unread) {
        return false;
    }
    const bool ended = time.End().has_value();
    const auto begin = time.Start();
    Start(begin.value_or(Clock::now()));
    return begin || !ended;
}

void SoundFeeder::Private::Hear(size_t source, SteadyTime captured, std::span<const int16_t> stereo)
{
    if (start) {
        tracks[source].Put(FrameAt(captured), stereo, given);
    }
}

// The position of a moment in the sound; negative before its beginning.
int64_t SoundFeeder::Private::FrameAt(SteadyTime moment) const
{
    return std::chrono::duration_cast<std::chrono::microseconds>(moment - *start).count() * rate /
           1000000;
}

int64_t SoundFeeder::Private::FramesDueNow() const
{
    const SteadyTime now = Clock::now() - delay;
    return FrameAt(std::min(now, time.End().value_or(now)));
}

// Whether everything up to the end is written.
bool SoundFeeder::Private::IsComplete() const
{
    const auto end = time.End();
    return end && Clock::now() >= *end + delay && given + PieceFrames(rate) > FramesDueNow() &&
           written == rest.size() * sizeof(int16_t);
}

// Writes what is due, as far as the pipe takes it. Returns false if ffmpeg has closed the pipe.
bool SoundFeeder::Private::Emit()
{
    const int64_t pieceFrames = PieceFrames(rate);
    const int64_t due = FramesDueNow();
    while (WriteRest()) {
        if (given + pieceFrames > due) {
            return true;
        }
        std::vector<int32_t> sum(static_cast<size_t>(pieceFrames) * 2);
        for (const SoundTrack& track : tracks) {
            track.AddTo(given, sum);
        }
        rest = Saturated(sum);
        written = 0;
        given += pieceFrames;
    }
    return errno == EAGAIN || errno == EINTR;
}

// Returns true if everything is written, else false with errno.
bool SoundFeeder::Private::WriteRest()
{
    const size_t size = rest.size() * sizeof(int16_t);
    while (written < size) {
        const auto* bytes = reinterpret_cast<const char*>(rest.data());
        const ssize_t count = write(pipe.Number(), bytes + written, size - written);
        if (count < 0) {
            return false;
        }
        written += static_cast<size_t>(count);
    }
    return true;
}

SoundFeeder::SoundFeeder(const SoundPlan& plan, Descriptor pipe, const RecordingTime& time)
    : m_p(std::make_unique<Private>(plan, std::move(pipe), time))
{
    MakeNonBlocking(m_p->pipe);
}

SoundFeeder::~SoundFeeder() = default;

void SoundFeeder::Run()
{
    if (!m_p->WaitForReader()) {
        return;
    }
    SetCapacity(m_p->pipe, pipeBytes); // so that a busy ffmpeg does not block it
    while (m_p->Emit() && !m_p->IsComplete()) {
        m_p->reader.Wait(20ms);
    }
}

} // namespace tool
