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

// The sound is mixed and written in pieces of this many frames, 93 ms at 44.1 kHz. ffmpeg reads as
// many at a time, so it wakes up once for each. Counted from the start: other versions read a
// quarter.
constexpr int64_t pieceFrames = 4096;
// How often to look at what nobody announces: the end, or room in the pipe.
constexpr auto look = 50ms;

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
    SteadyTime MomentOf(int64_t frame) const;
    bool IsOver() const;
    int64_t NextPiece() const;
    bool IsComplete() const;
    std::chrono::milliseconds TimeToNextPiece() const;
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

SteadyTime SoundFeeder::Private::MomentOf(int64_t frame) const
{
    return *start + std::chrono::microseconds((frame * 1000000 + rate - 1) / rate);
}

// Whether all sound up to the end has arrived.
bool SoundFeeder::Private::IsOver() const
{
    const auto end = time.End();
    return end && Clock::now() >= *end + delay;
}

// The length of the piece to write now, in frames; 0: none is due. The last one ends with the
// recording.
int64_t SoundFeeder::Private::NextPiece() const
{
    const int64_t whole = pieceFrames - given % pieceFrames;
    const bool isLast = IsOver();
    const SteadyTime now = Clock::now() - delay;
    const int64_t due = FrameAt(std::min(now, time.End().value_or(now))) - given;
    return due >= whole ? whole : isLast ? std::max<int64_t>(due, 0) : 0;
}

// Whether everything up to the end is written.
bool SoundFeeder::Private::IsComplete() const
{
    return IsOver() && NextPiece() == 0 && written == rest.size() * sizeof(int16_t);
}

std::chrono::milliseconds SoundFeeder::Private::TimeToNextPiece() const
{
    const SteadyTime full = MomentOf(given + pieceFrames - given % pieceFrames);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(
        std::min(full, time.End().value_or(full)) + delay - Clock::now());
    return left > 0ms ? std::min<std::chrono::milliseconds>(left, look) : look;
}

// Writes what is due, as far as the pipe takes it. Returns false if ffmpeg has closed the pipe.
bool SoundFeeder::Private::Emit()
{
    while (WriteRest()) {
        const int64_t frames = NextPiece();
        if (frames == 0) {
            return true;
        }
        std::vector<int32_t> sum(static_cast<size_t>(frames) * 2);
        for (SoundTrack& track : tracks) {
            track.AddTo(given, sum);
            track.Forget(given + frames);
        }
        rest = Saturated(sum);
        written = 0;
        given += frames;
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
        m_p->reader.Wait(m_p->TimeToNextPiece());
    }
}

} // namespace tool
