#include "tool/sound/pulse/sound_devices.h"

#include "tool/sound/pulse/pulse_library.h"
#include "tool/system/steady_time.h"

namespace tool {
namespace {

std::string Text(const char* text)
{
    return text == nullptr ? std::string() : text;
}

// Connects to the server and asks it two questions.
class Inquiry
{
public:
    explicit Inquiry(const PulseLibrary& pulse)
        : m_pulse(pulse),
          m_pLoop(m_pulse.mainloopNew()),
          m_pContext(
              m_pulse.contextNew(m_pulse.mainloopGetApi(m_pLoop), "Lumenfold Screen Recorder"))
    {
    }
    Inquiry(const Inquiry&) = delete;
    Inquiry& operator=(const Inquiry&) = delete;
    ~Inquiry()
    {
        m_pulse.contextDisconnect(m_pContext);
        m_pulse.contextUnref(m_pContext);
        m_pulse.mainloopFree(m_pLoop);
    }

    std::optional<SoundServer> Run(std::chrono::milliseconds patience)
    {
        const SteadyTime end = SteadyTime::clock::now() + patience;
        m_pulse.contextSetStateCallback(m_pContext, &Inquiry::OnState, this);
        if (m_pulse.contextConnect(m_pContext, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
            return std::nullopt;
        }
        while (m_nAnswers < 2 && !m_bFailed) {
            const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
                                  end - SteadyTime::clock::now())
                                  .count();
            if (left <= 0 || m_pulse.mainloopPrepare(m_pLoop, static_cast<int>(left)) < 0 ||
                m_pulse.mainloopPoll(m_pLoop) < 0 || m_pulse.mainloopDispatch(m_pLoop) < 0) {
                return std::nullopt;
            }
        }
        if (m_bFailed) {
            return std::nullopt;
        }
        return m_server;
    }

private:
    static void OnState(pa_context* context, void* data)
    {
        auto* self = static_cast<Inquiry*>(data);
        switch (self->m_pulse.contextGetState(context)) {
        case PA_CONTEXT_READY:
            self->Unref(self->m_pulse.contextGetServerInfo(context, &Inquiry::OnServer, self));
            self->Unref(self->m_pulse.contextGetSourceInfoList(context, &Inquiry::OnSource, self));
            break;
        case PA_CONTEXT_FAILED:
        case PA_CONTEXT_TERMINATED:
            self->m_bFailed = true;
            break;
        default:
            break;
        }
    }

    static void OnServer(pa_context* /*context*/, const pa_server_info* info, void* data)
    {
        auto* self = static_cast<Inquiry*>(data);
        if (info != nullptr) {
            self->m_server.defaultSource = Text(info->default_source_name);
            self->m_server.defaultSink = Text(info->default_sink_name);
        }
        ++self->m_nAnswers;
    }

    static void OnSource(pa_context* /*context*/, const pa_source_info* info, int end, void* data)
    {
        auto* self = static_cast<Inquiry*>(data);
        if (end != 0) {
            ++self->m_nAnswers;
        } else if (info != nullptr) {
            self->m_server.sources.push_back(
                {Text(info->name), Text(info->description), Text(info->monitor_of_sink_name)});
        }
    }

    void Unref(pa_operation* operation) const
    {
        if (operation != nullptr) {
            m_pulse.operationUnref(operation);
        }
    }

    const PulseLibrary& m_pulse;
    pa_mainloop* m_pLoop;
    pa_context* m_pContext;
    SoundServer m_server;
    int m_nAnswers = 0;
    bool m_bFailed = false;
};

} // namespace

std::optional<SoundServer> ReadSoundServer(std::chrono::milliseconds patience)
{
    const PulseLibrary* pulse = Pulse();
    return pulse != nullptr ? Inquiry(*pulse).Run(patience) : std::nullopt;
}

} // namespace tool
