#include "tests/support/signal/beeper.h"

#include <cmath>
#include <cstdint>
#include <numbers>
#include <optional>
#include <pulse/pulseaudio.h>
#include <vector>

namespace {
constexpr uint32_t rate = 48000;
constexpr int64_t beepSamples = rate / 10;
constexpr int16_t volume = 8000;

using std::chrono::microseconds;

// How long ago the server told the positions of a stream.
microseconds AgeOf(const pa_timing_info& told)
{
    const microseconds moment =
        std::chrono::seconds(told.timestamp.tv_sec) + microseconds(told.timestamp.tv_usec);
    return std::chrono::duration_cast<microseconds>(
        std::chrono::system_clock::now().time_since_epoch() - moment);
}

} // namespace

struct Beeper::Private
{
    Tone tone;
    bool beeps = false;
    pa_threaded_mainloop* loop = nullptr;
    pa_context* context = nullptr;
    pa_stream* stream = nullptr;
    int64_t written = 0;
    int64_t beepStart = -beepSamples;

    static void OnContext(pa_context* context, void* data);
    static void OnWrite(pa_stream* stream, size_t bytes, void* data);
    void OpenStream();
    std::optional<SteadyTime> Heard(int64_t sample) const;
};

void Beeper::Private::OnContext(pa_context* context, void* data)
{
    if (pa_context_get_state(context) == PA_CONTEXT_READY) {
        static_cast<Private*>(data)->OpenStream();
    }
}

void Beeper::Private::OpenStream()
{
    const pa_sample_spec format{PA_SAMPLE_S16LE, rate, 1};
    stream = pa_stream_new(context, "Test tone", &format, nullptr);
    pa_stream_set_write_callback(stream, &Private::OnWrite, this);
    pa_buffer_attr buffer{};
    buffer.maxlength = buffer.prebuf = buffer.minreq = buffer.fragsize = static_cast<uint32_t>(-1);
    buffer.tlength = rate / 25 * sizeof(int16_t); // 40 ms
    const auto flags =
        static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE);
    pa_stream_connect_playback(stream, tone.sink.empty() ? nullptr : tone.sink.c_str(), &buffer,
                               flags, nullptr, nullptr);
}

void Beeper::Private::OnWrite(pa_stream* target, size_t bytes, void* data)
{
    auto* self = static_cast<Private*>(data);
    std::vector<int16_t> samples(bytes / sizeof(int16_t));
    for (int16_t& sample : samples) {
        const int64_t since = self->written++ - self->beepStart;
        if (!self->beeps || (since >= 0 && since < beepSamples)) {
            const double turns = self->tone.hertz * static_cast<double>(since % rate) / rate;
            sample = static_cast<int16_t>(volume * std::sin(2 * std::numbers::pi * turns));
        }
    }
    pa_stream_write(target, samples.data(), samples.size() * sizeof(int16_t), nullptr, 0,
                    PA_SEEK_RELATIVE);
}

Beeper::Beeper(const Tone& tone, bool beeps) : m_p(new Private)
{
    m_p->tone = tone;
    m_p->beeps = beeps;
    if (tone.hertz <= 0) {
        return;
    }
    m_p->loop = pa_threaded_mainloop_new();
    m_p->context = pa_context_new(pa_threaded_mainloop_get_api(m_p->loop), "Test pattern");
    pa_context_set_state_callback(m_p->context, &Private::OnContext, m_p);
    pa_context_connect(m_p->context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    pa_threaded_mainloop_start(m_p->loop);
}

Beeper::~Beeper()
{
    if (m_p->loop != nullptr) {
        pa_threaded_mainloop_stop(m_p->loop);
        pa_context_disconnect(m_p->context);
        if (m_p->stream != nullptr) {
            pa_stream_unref(m_p->stream);
        }
        pa_context_unref(m_p->context);
        pa_threaded_mainloop_free(m_p->loop);
    }
    delete m_p;
}

// When this sample, counted from the first one written, is heard. Without the library's
// interpolation, which is wrong for seconds after an output starts to play.
std::optional<SteadyTime> Beeper::Private::Heard(int64_t sample) const
{
    const pa_timing_info* told = stream != nullptr ? pa_stream_get_timing_info(stream) : nullptr;
    if (told == nullptr) {
        return std::nullopt;
    }
    const int64_t ahead = sample - told->read_index / static_cast<int64_t>(sizeof(int16_t));
    return std::chrono::steady_clock::now() - AgeOf(*told) + microseconds(told->sink_usec) +
           microseconds(ahead * 1000000 / rate);
}

void Beeper::Beep()
{
    if (m_p->loop != nullptr) {
        pa_threaded_mainloop_lock(m_p->loop);
        // The beep starts with the next sample written; what was written before is heard first.
        m_p->beepStart = m_p->written;
        pa_threaded_mainloop_unlock(m_p->loop);
    }
}

SteadyTime Beeper::BeepHeard()
{
    if (m_p->loop == nullptr) {
        return {};
    }
    pa_threaded_mainloop_lock(m_p->loop);
    const auto heard = m_p->Heard(m_p->beepStart);
    if (heard) {
        if (pa_operation* asked = pa_stream_update_timing_info(m_p->stream, nullptr, nullptr)) {
            pa_operation_unref(asked);
        }
    }
    pa_threaded_mainloop_unlock(m_p->loop);
    return heard.value_or(SteadyTime());
}
