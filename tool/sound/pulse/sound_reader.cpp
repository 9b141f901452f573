#include "tool/sound/pulse/sound_reader.h"

#include "tool/sound/pulse/pulse_library.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace tool {
namespace {

using namespace std::chrono_literals;

constexpr auto retryDistance = 500ms;
constexpr uint32_t fragmentsPerSecond = 25; // servers deliver half-size pieces
constexpr uint32_t frameBytes = 2 * sizeof(int16_t);

} // namespace

struct SoundReader::Private
{
    struct Source
    {
        Private* owner = nullptr;
        size_t number = 0;
        std::string name;
        pa_stream* stream = nullptr;
        SteadyTime retry;
    };

    const PulseLibrary* pulse = Pulse();
    std::vector<Source> sources;
    uint32_t rate = 0;
    SoundListener listener;
    pa_mainloop* loop = nullptr;
    pa_context* context = nullptr;
    SteadyTime retry;

    void Connect();
    void DropContext();
    void Open(Source& source);
    void DropStream(Source& source) const;
    void KeepOpen();
    static void OnRead(pa_stream* stream, size_t bytes, void* data);
    void Deliver(const Source& source, const void* bytes, size_t size) const;
};

SoundReader::SoundReader(std::vector<std::string> sources, int rate, SoundListener listener)
    : m_p(std::make_unique<Private>())
{
    m_p->rate = static_cast<uint32_t>(rate);
    m_p->listener = std::move(listener);
    if (m_p->pulse != nullptr) {
        m_p->loop = m_p->pulse->mainloopNew();
    }
    for (std::string& name : sources) {
        m_p->sources.push_back({m_p.get(), m_p->sources.size(), std::move(name), nullptr, {}});
    }
}

SoundReader::~SoundReader()
{
    if (m_p->pulse != nullptr) {
        m_p->DropContext();
        m_p->pulse->mainloopFree(m_p->loop);
    }
}

void SoundReader::Wait(std::chrono::milliseconds time)
{
    const PulseLibrary* pulse = m_p->pulse;
    if (pulse == nullptr) {
        std::this_thread::sleep_for(time); // there is no sound
        return;
    }
    m_p->KeepOpen();
    const int microseconds = static_cast<int>(std::chrono::microseconds(time).count());
    if (pulse->mainloopPrepare(m_p->loop, microseconds) < 0 || pulse->mainloopPoll(m_p->loop) < 0 ||
        pulse->mainloopDispatch(m_p->loop) < 0) {
        std::this_thread::sleep_for(time); // a broken loop must not become a busy loop
    }
}

// Opens what is not open. Failed streams are dropped here, outside the library's callbacks.
void SoundReader::Private::KeepOpen()
{
    if (context != nullptr && !PA_CONTEXT_IS_GOOD(pulse->contextGetState(context))) {
        DropContext();
        retry = std::chrono::steady_clock::now() + retryDistance;
    }
    if (context == nullptr) {
        if (std::chrono::steady_clock::now() >= retry) {
            Connect();
        }
        return;
    }
    if (pulse->contextGetState(context) != PA_CONTEXT_READY) {
        return;
    }
    for (Source& source : sources) {
        if (source.stream != nullptr && !PA_STREAM_IS_GOOD(pulse->streamGetState(source.stream))) {
            DropStream(source);
            source.retry = std::chrono::steady_clock::now() + retryDistance;
        }
        if (source.stream == nullptr && std::chrono::steady_clock::now() >= source.retry) {
            Open(source);
        }
    }
}

void SoundReader::Private::Connect()
{
    context = pulse->contextNew(pulse->mainloopGetApi(loop), "Lumenfold Screen Recorder");
    if (context != nullptr &&
        pulse->contextConnect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        DropContext();
        retry = std::chrono::steady_clock::now() + retryDistance;
    }
}

void SoundReader::Private::DropContext()
{
    for (Source& source : sources) {
        DropStream(source);
    }
    if (context != nullptr) {
        pulse->contextDisconnect(context);
        pulse->contextUnref(context);
        context = nullptr;
    }
}

void SoundReader::Private::Open(Source& source)
{
    const pa_sample_spec format{PA_SAMPLE_S16LE, rate, 2};
    source.stream = pulse->streamNew(context, "Recording", &format, nullptr);
    if (source.stream == nullptr) {
        source.retry = std::chrono::steady_clock::now() + retryDistance;
        return;
    }
    pulse->streamSetReadCallback(source.stream, &Private::OnRead, &source);
    pa_buffer_attr buffer{};
    buffer.maxlength = static_cast<uint32_t>(-1);
    buffer.fragsize = rate / fragmentsPerSecond * frameBytes;
    // DONT_MOVE: never record a device the user did not choose.
    const auto flags =
        static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE |
                                       PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_DONT_MOVE);
    listener.opened(source.number);
    if (pulse->streamConnectRecord(source.stream, source.name.c_str(), &buffer, flags) < 0) {
        DropStream(source);
        source.retry = std::chrono::steady_clock::now() + retryDistance;
    }
}

void SoundReader::Private::DropStream(Source& source) const
{
    if (source.stream != nullptr) {
        pulse->streamSetReadCallback(source.stream, nullptr, nullptr);
        pulse->streamDisconnect(source.stream);
        pulse->streamUnref(source.stream);
        source.stream = nullptr;
    }
}

void SoundReader::Private::OnRead(pa_stream* stream, size_t /*bytes*/, void* data)
{
    const auto* source = static_cast<Source*>(data);
    const void* bytes = nullptr;
    size_t size = 0;
    const PulseLibrary* pulse = source->owner->pulse;
    while (pulse->streamPeek(stream, &bytes, &size) == 0 && size > 0) {
        if (bytes != nullptr) { // null is a hole, which stays silent
            source->owner->Deliver(*source, bytes, size);
        }
        pulse->streamDrop(stream);
    }
}

// The latency says how long ago the first sample was captured. For a monitor it says when the
// sample is heard, which may be in the future.
void SoundReader::Private::Deliver(const Source& source, const void* bytes, size_t size) const
{
    pa_usec_t latency = 0;
    int negative = 0;
    auto age = std::chrono::microseconds(size / frameBytes * 1000000 / rate);
    if (pulse->streamGetLatency(source.stream, &latency, &negative) == 0) {
        age = std::chrono::microseconds(latency);
        age = negative != 0 ? -age : age;
    }
    listener.sound(source.number, std::chrono::steady_clock::now() - age,
                   {static_cast<const int16_t*>(bytes), size / sizeof(int16_t)});
}

} // namespace tool
