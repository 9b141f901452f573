#include "tool/sound_devices.h"

#include <pulse/pulseaudio.h>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

std::string Text(const char* text)
{
    return text == nullptr ? std::string() : text;
}

// One conversation with the server: connect, two questions, done.
class Inquiry
{
public:
    Inquiry()
        : m_pLoop(pa_mainloop_new()),
          m_pContext(pa_context_new(pa_mainloop_get_api(m_pLoop), "Lumenfold Screen Recorder"))
    {
    }
    Inquiry(const Inquiry&) = delete;
    Inquiry& operator=(const Inquiry&) = delete;
    ~Inquiry()
    {
        pa_context_disconnect(m_pContext);
        pa_context_unref(m_pContext);
        pa_mainloop_free(m_pLoop);
    }

    std::optional<SoundServer> Run(std::chrono::milliseconds patience)
    {
        const Clock::time_point end = Clock::now() + patience;
        pa_context_set_state_callback(m_pContext, &Inquiry::OnState, this);
        if (pa_context_connect(m_pContext, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
            return std::nullopt;
        }
        while (m_nAnswers < 2 && !m_bFailed) {
            const auto left =
                std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now()).count();
            if (left <= 0 || pa_mainloop_prepare(m_pLoop, static_cast<int>(left)) < 0 ||
                pa_mainloop_poll(m_pLoop) < 0 || pa_mainloop_dispatch(m_pLoop) < 0) {
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
        switch (pa_context_get_state(context)) {
        case PA_CONTEXT_READY:
            Unref(pa_context_get_server_info(context, &Inquiry::OnServer, self));
            Unref(pa_context_get_source_info_list(context, &Inquiry::OnSource, self));
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

    static void Unref(pa_operation* operation)
    {
        if (operation != nullptr) {
            pa_operation_unref(operation);
        }
    }

    pa_mainloop* m_pLoop;
    pa_context* m_pContext;
    SoundServer m_server;
    int m_nAnswers = 0;
    bool m_bFailed = false;
};

} // namespace

std::optional<SoundServer> ReadSoundServer(std::chrono::milliseconds patience)
{
    return Inquiry().Run(patience);
}

} // namespace tool
