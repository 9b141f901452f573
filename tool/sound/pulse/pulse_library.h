// The sound server's client library, loaded on first use. It brings two dozen libraries along,
// which take 5 ms to load and which trims and joins do not need.
#pragma once

#include <pulse/pulseaudio.h>

namespace tool {

// The functions used, named without "pa_".
struct PulseLibrary
{
    decltype(&pa_context_connect) contextConnect = nullptr;
    decltype(&pa_context_disconnect) contextDisconnect = nullptr;
    decltype(&pa_context_get_server_info) contextGetServerInfo = nullptr;
    decltype(&pa_context_get_sink_info_by_name) contextGetSinkInfoByName = nullptr;
    decltype(&pa_context_get_source_info_list) contextGetSourceInfoList = nullptr;
    decltype(&pa_context_get_state) contextGetState = nullptr;
    decltype(&pa_context_new) contextNew = nullptr;
    decltype(&pa_context_set_state_callback) contextSetStateCallback = nullptr;
    decltype(&pa_context_set_subscribe_callback) contextSetSubscribeCallback = nullptr;
    decltype(&pa_context_subscribe) contextSubscribe = nullptr;
    decltype(&pa_context_unref) contextUnref = nullptr;
    decltype(&pa_mainloop_dispatch) mainloopDispatch = nullptr;
    decltype(&pa_mainloop_free) mainloopFree = nullptr;
    decltype(&pa_mainloop_get_api) mainloopGetApi = nullptr;
    decltype(&pa_mainloop_new) mainloopNew = nullptr;
    decltype(&pa_mainloop_poll) mainloopPoll = nullptr;
    decltype(&pa_mainloop_prepare) mainloopPrepare = nullptr;
    decltype(&pa_operation_unref) operationUnref = nullptr;
    decltype(&pa_stream_connect_record) streamConnectRecord = nullptr;
    decltype(&pa_stream_disconnect) streamDisconnect = nullptr;
    decltype(&pa_stream_drop) streamDrop = nullptr;
    decltype(&pa_stream_get_state) streamGetState = nullptr;
    decltype(&pa_stream_get_timing_info) streamGetTimingInfo = nullptr;
    decltype(&pa_stream_new) streamNew = nullptr;
    decltype(&pa_stream_peek) streamPeek = nullptr;
    decltype(&pa_stream_readable_size) streamReadableSize = nullptr;
    decltype(&pa_stream_set_latency_update_callback) streamSetLatencyUpdateCallback = nullptr;
    decltype(&pa_stream_set_read_callback) streamSetReadCallback = nullptr;
    decltype(&pa_stream_unref) streamUnref = nullptr;
    decltype(&pa_stream_update_timing_info) streamUpdateTimingInfo = nullptr;
};

// Loads the library on the first call. Returns null if it is missing or lacks a function.
const PulseLibrary* Pulse();

} // namespace tool
