#include "tool/screen/portal/cast_stream.h"

#include "tool/screen/portal/cast_picture.h"
#include "tool/system/signals.h"

#include <utility>

namespace tool {

// Some of PipeWire's functions are macros that no standard knows: those after __extension__.

const pw_stream_events CastStream::streamEvents = [] {
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.state_changed = OnState;
    events.param_changed = OnParameter;
    events.remove_buffer = OnRemoveBuffer;
    events.process = OnProcess;
    return events;
}();

const pw_core_events CastStream::coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.error = OnError;
    return events;
}();

std::unique_ptr<CastStream> CastStream::Open(Descriptor connection, uint32_t node)
{
    std::unique_ptr<CastStream> stream(PipeWire() == nullptr ? nullptr : new CastStream);
    const SignalBlock block; // the library starts a thread
    return stream && stream->Connect(std::move(connection), node) ? std::move(stream) : nullptr;
}

bool CastStream::Connect(Descriptor connection, uint32_t node)
{
    m_pLoop = PipeWire()->loopNew(nullptr);
    m_pContext = m_pLoop == nullptr ? nullptr : PipeWire()->contextNew(m_pLoop, nullptr, 0);
    m_pCore = m_pContext == nullptr
                  ? nullptr
                  : PipeWire()->contextConnectFd(m_pContext, connection.Release(), nullptr, 0);
    if (m_pCore == nullptr) {
        return false;
    }
    __extension__ pw_core_add_listener(m_pCore, &m_coreListener, &coreEvents, this);
    m_pStream = PipeWire()->streamNew(
        m_pCore, "Lumenfold Screen Recorder",
        PipeWire()->propertiesNew(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY, "Capture",
                                  PW_KEY_MEDIA_ROLE, "Screen", nullptr));
    if (m_pStream == nullptr) {
        return false;
    }
    PipeWire()->streamAddListener(m_pStream, &m_streamListener, &streamEvents, this);
    CastParameters parameters;
    const spa_pod* formats = parameters.OfferedFormats();
    // Another screen in the place of one that has gone is not what the user has allowed.
    constexpr auto flags = static_cast<pw_stream_flags>(
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_DONT_RECONNECT);
    return PipeWire()->streamConnect(m_pStream, PW_DIRECTION_INPUT, node, flags, &formats, 1) >= 0;
}

CastStream::~CastStream()
{
    if (m_pStream != nullptr) {
        Release();
        PipeWire()->streamDestroy(m_pStream);
    }
    if (m_pCore != nullptr) {
        PipeWire()->coreDisconnect(m_pCore);
    }
    if (m_pContext != nullptr) {
        PipeWire()->contextDestroy(m_pContext);
    }
    if (m_pLoop != nullptr) {
        PipeWire()->loopDestroy(m_pLoop);
    }
}

int CastStream::Number() const
{
    return __extension__ pw_loop_get_fd(m_pLoop);
}

void CastStream::Work()
{
    constexpr int mostRounds = 100; // whatever the other side sends
    __extension__ pw_loop_enter(m_pLoop);
    int handled = 1;
    for (int round = 0; round < mostRounds && handled > 0; ++round) {
        handled = __extension__ pw_loop_iterate(m_pLoop, 0);
    }
    __extension__ pw_loop_leave(m_pLoop);
}

void CastStream::FollowFormat(const spa_pod* format)
{
    Release(); // its memory has the old size
    m_format = ReadFormat(format);
    if (m_format) {
        CastParameters parameters;
        auto buffers = parameters.Buffers();
        PipeWire()->streamUpdateParams(m_pStream, buffers.data(),
                                       static_cast<uint32_t>(buffers.size()));
    }
}

// Keeps the newest buffer with a picture and gives the others back.
void CastStream::FollowBuffers()
{
    while (pw_buffer* buffer = PipeWire()->streamDequeueBuffer(m_pStream)) {
        const auto picture = m_format && buffer->buffer != nullptr
                                 ? PictureIn(*buffer->buffer, *m_format)
                                 : std::nullopt;
        if (!picture) {
            PipeWire()->streamQueueBuffer(m_pStream, buffer);
            continue;
        }
        Release();
        m_pHeld = buffer;
        m_picture = picture;
        ++m_nCount;
    }
}

void CastStream::Release()
{
    m_picture.reset();
    if (m_pHeld != nullptr) {
        PipeWire()->streamQueueBuffer(m_pStream, std::exchange(m_pHeld, nullptr));
    }
}

void CastStream::OnState(void* self, pw_stream_state /*old*/, pw_stream_state state,
                         const char* /*error*/)
{
    if (state == PW_STREAM_STATE_ERROR || state == PW_STREAM_STATE_UNCONNECTED) {
        static_cast<CastStream*>(self)->m_bLost = true;
    }
}

void CastStream::OnParameter(void* self, uint32_t id, const spa_pod* parameter)
{
    if (id == SPA_PARAM_Format) {
        static_cast<CastStream*>(self)->FollowFormat(parameter);
    }
}

void CastStream::OnRemoveBuffer(void* self, pw_buffer* buffer)
{
    auto* stream = static_cast<CastStream*>(self);
    if (stream->m_pHeld == buffer) {
        stream->m_pHeld = nullptr;
        stream->m_picture.reset();
    }
}

void CastStream::OnProcess(void* self)
{
    static_cast<CastStream*>(self)->FollowBuffers();
}

void CastStream::OnError(void* self, uint32_t id, int /*sequence*/, int /*result*/,
                         const char* /*message*/)
{
    if (id == PW_ID_CORE) {
        static_cast<CastStream*>(self)->m_bLost = true;
    }
}

} // namespace tool
