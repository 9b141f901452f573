// The pictures of a PipeWire stream. Works only inside its functions, on the thread that calls
// them.
#pragma once

#include "tool/screen/frame_fitter.h"
#include "tool/screen/portal/cast_format.h"
#include "tool/screen/portal/pipewire_library.h"
#include "tool/system/descriptor.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace tool {

class CastStream
{
public:
    // `connection`: to PipeWire. Returns null if there can be no stream.
    static std::unique_ptr<CastStream> Open(Descriptor connection, uint32_t node);
    CastStream(const CastStream&) = delete;
    CastStream& operator=(const CastStream&) = delete;
    ~CastStream();

    // Can be read from when there is something for Work().
    int Number() const;
    // Follows what has happened. Never waits. Pictures returned before are gone.
    void Work();

    // Whether the stream has ended.
    bool IsLost() const { return m_bLost; }
    // As the desktop delivers the pictures; nothing before that is agreed.
    const std::optional<CastFormat>& Format() const { return m_format; }
    // The newest picture, nothing if there is none.
    const std::optional<SourcePicture>& Picture() const { return m_picture; }
    // Counts the pictures.
    uint64_t Count() const { return m_nCount; }

private:
    CastStream() = default;
    bool Connect(Descriptor connection, uint32_t node);
    void FollowFormat(const spa_pod* format);
    void FollowBuffers();
    void Release();

    static void OnState(void* self, pw_stream_state old, pw_stream_state state, const char* error);
    static void OnParameter(void* self, uint32_t id, const spa_pod* parameter);
    static void OnRemoveBuffer(void* self, pw_buffer* buffer);
    static void OnProcess(void* self);
    static void OnError(void* self, uint32_t id, int sequence, int result, const char* message);
    static const pw_stream_events streamEvents;
    static const pw_core_events coreEvents;

    pw_loop* m_pLoop = nullptr;
    pw_context* m_pContext = nullptr;
    pw_core* m_pCore = nullptr;
    pw_stream* m_pStream = nullptr;
    spa_hook m_streamListener{};
    spa_hook m_coreListener{};

    std::optional<CastFormat> m_format;
    pw_buffer* m_pHeld = nullptr; // the newest one
    std::optional<SourcePicture> m_picture;
    uint64_t m_nCount = 0;
    bool m_bLost = false;
};

} // namespace tool
