#include "tool/sound/pulse/pulse_library.h"

#include "tool/system/shared_library.h"

#include <optional>

namespace tool {
namespace {

std::optional<PulseLibrary> Load()
{
    SharedLibrary symbols("libpulse.so.0");
    PulseLibrary library;
    symbols.Find(library.contextConnect, "pa_context_connect");
    symbols.Find(library.contextDisconnect, "pa_context_disconnect");
    symbols.Find(library.contextGetServerInfo, "pa_context_get_server_info");
    symbols.Find(library.contextGetSinkInfoByName, "pa_context_get_sink_info_by_name");
    symbols.Find(library.contextGetSourceInfoList, "pa_context_get_source_info_list");
    symbols.Find(library.contextGetState, "pa_context_get_state");
    symbols.Find(library.contextNew, "pa_context_new");
    symbols.Find(library.contextSetStateCallback, "pa_context_set_state_callback");
    symbols.Find(library.contextSetSubscribeCallback, "pa_context_set_subscribe_callback");
    symbols.Find(library.contextSubscribe, "pa_context_subscribe");
    symbols.Find(library.contextUnref, "pa_context_unref");
    symbols.Find(library.mainloopDispatch, "pa_mainloop_dispatch");
    symbols.Find(library.mainloopFree, "pa_mainloop_free");
    symbols.Find(library.mainloopGetApi, "pa_mainloop_get_api");
    symbols.Find(library.mainloopNew, "pa_mainloop_new");
    symbols.Find(library.mainloopPoll, "pa_mainloop_poll");
    symbols.Find(library.mainloopPrepare, "pa_mainloop_prepare");
    symbols.Find(library.operationUnref, "pa_operation_unref");
    symbols.Find(library.streamConnectRecord, "pa_stream_connect_record");
    symbols.Find(library.streamDisconnect, "pa_stream_disconnect");
    symbols.Find(library.streamDrop, "pa_stream_drop");
    symbols.Find(library.streamGetState, "pa_stream_get_state");
    symbols.Find(library.streamGetTimingInfo, "pa_stream_get_timing_info");
    symbols.Find(library.streamNew, "pa_stream_new");
    symbols.Find(library.streamPeek, "pa_stream_peek");
    symbols.Find(library.streamReadableSize, "pa_stream_readable_size");
    symbols.Find(library.streamSetLatencyUpdateCallback, "pa_stream_set_latency_update_callback");
    symbols.Find(library.streamSetReadCallback, "pa_stream_set_read_callback");
    symbols.Find(library.streamUnref, "pa_stream_unref");
    symbols.Find(library.streamUpdateTimingInfo, "pa_stream_update_timing_info");
    return symbols.IsComplete() ? std::optional(library) : std::nullopt;
}

} // namespace

const PulseLibrary* Pulse()
{
    static const std::optional<PulseLibrary> library = Load();
    return library ? &*library : nullptr;
}

} // namespace tool
