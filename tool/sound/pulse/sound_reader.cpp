#include "tool/sound/pulse/sound_reader.h"

#include "tool/sound/pulse/record_stream.h"
#include "tool/sound/sound_server.h"

#include <thread>
#include <utility>

namespace tool {
namespace {

using namespace std::chrono_literals;

constexpr auto retryDistance = 500ms;

} // namespace

struct SoundReader::Private
{
    struct Source
    {
        std::string name;       // the server's, or `computerSounds`
        std::string tried = {}; // the server's name it was last opened by
        std::unique_ptr<RecordStream> stream = nullptr;
        SteadyTime retry = {};
    };

    const PulseLibrary* pulse = Pulse();
    std::vector<Source> sources;
    uint32_t rate = 0;
    SoundListener listener;
    pa_mainloop* loop = nullptr;
    pa_context* context = nullptr;
    SteadyTime retry;
    std::string defaultMonitor; // of the default output; empty: there is none

    void Connect();
    void DropContext();
    void KeepOpen();
    void KeepOpen(size_t number);
    static void OnState(pa_context* context, void* data);
    static void OnChange(pa_context* context, pa_subscription_event_type_t event, uint32_t index,
                         void* data);
    static void OnOutput(pa_context* context, const pa_sink_info* output, int end, void* data);
    void AskForDefault();
    void Forget(pa_operation* operation) const;
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
        m_p->sources.push_back({std::move(name)});
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
        retry = SteadyTime::clock::now() + retryDistance;
    }
    if (context == nullptr) {
        if (SteadyTime::clock::now() >= retry) {
            Connect();
        }
    } else if (pulse->contextGetState(context) == PA_CONTEXT_READY) {
        for (size_t number = 0; number < sources.size(); ++number) {
            KeepOpen(number);
        }
    }
}

void SoundReader::Private::KeepOpen(size_t number)
{
    Source& source = sources[number];
    const std::string& name = source.name == computerSounds ? defaultMonitor : source.name;
    if (source.stream != nullptr && !source.stream->IsGood()) {
        source.stream.reset();
        source.retry = SteadyTime::clock::now() + retryDistance;
    }
    if (source.tried != name) { // another output has become the default
        source.stream.reset();
        source.retry = {};
    }
    if (source.stream == nullptr && !name.empty() && SteadyTime::clock::now() >= source.retry) {
        source.tried = name;
        listener.opened(number);
        source.stream = std::make_unique<RecordStream>(
            *pulse, context, name, rate,
            [this, number](SteadyTime captured, std::span<const int16_t> stereo) {
                listener.sound(number, captured, stereo);
            });
    }
}

void SoundReader::Private::Connect()
{
    context = pulse->contextNew(pulse->mainloopGetApi(loop), "Lumenfold Screen Recorder");
    if (context == nullptr) {
        return;
    }
    pulse->contextSetStateCallback(context, &Private::OnState, this);
    pulse->contextSetSubscribeCallback(context, &Private::OnChange, this);
    if (pulse->contextConnect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        DropContext();
        retry = SteadyTime::clock::now() + retryDistance;
    }
}

void SoundReader::Private::DropContext()
{
    for (Source& source : sources) {
        source.stream.reset();
        source.retry = {};
    }
    defaultMonitor.clear();
    if (context != nullptr) {
        pulse->contextSetStateCallback(context, nullptr, nullptr);
        pulse->contextDisconnect(context);
        pulse->contextUnref(context);
        context = nullptr;
    }
}

void SoundReader::Private::OnState(pa_context* context, void* data)
{
    auto* self = static_cast<Private*>(data);
    if (self->pulse->contextGetState(context) == PA_CONTEXT_READY) {
        self->Forget(
            self->pulse->contextSubscribe(context, PA_SUBSCRIPTION_MASK_SERVER, nullptr, nullptr));
        self->AskForDefault();
    }
}

// The server's defaults have changed.
void SoundReader::Private::OnChange(pa_context* /*context*/, pa_subscription_event_type_t /*event*/,
                                    uint32_t /*index*/, void* data)
{
    static_cast<Private*>(data)->AskForDefault();
}

void SoundReader::Private::AskForDefault()
{
    Forget(pulse->contextGetSinkInfoByName(context, "@DEFAULT_SINK@", &Private::OnOutput, this));
}

// Called once with the output and once with `end` set: 1, or -1 if there is no output.
void SoundReader::Private::OnOutput(pa_context* /*context*/, const pa_sink_info* output, int end,
                                    void* data)
{
    auto* self = static_cast<Private*>(data);
    if (end < 0) {
        self->defaultMonitor.clear();
    } else if (output != nullptr && output->monitor_source_name != nullptr) {
        self->defaultMonitor = output->monitor_source_name;
    }
}

void SoundReader::Private::Forget(pa_operation* operation) const
{
    if (operation != nullptr) {
        pulse->operationUnref(operation);
    }
}

} // namespace tool
