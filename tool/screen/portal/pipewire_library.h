// PipeWire's client library, loaded on first use.
#pragma once

#include <pipewire/pipewire.h>

namespace tool {

// The functions used, named without "pw_".
struct PipeWireLibrary
{
    decltype(&pw_context_connect_fd) contextConnectFd = nullptr;
    decltype(&pw_context_destroy) contextDestroy = nullptr;
    decltype(&pw_context_new) contextNew = nullptr;
    decltype(&pw_core_disconnect) coreDisconnect = nullptr;
    decltype(&pw_init) init = nullptr;
    decltype(&pw_loop_destroy) loopDestroy = nullptr;
    decltype(&pw_loop_new) loopNew = nullptr;
    decltype(&pw_properties_new) propertiesNew = nullptr;
    decltype(&pw_stream_add_listener) streamAddListener = nullptr;
    decltype(&pw_stream_connect) streamConnect = nullptr;
    decltype(&pw_stream_dequeue_buffer) streamDequeueBuffer = nullptr;
    decltype(&pw_stream_destroy) streamDestroy = nullptr;
    decltype(&pw_stream_new) streamNew = nullptr;
    decltype(&pw_stream_queue_buffer) streamQueueBuffer = nullptr;
    decltype(&pw_stream_update_params) streamUpdateParams = nullptr;
};

// Loads and initialises the library on the first call. Returns null if it is missing or lacks a
// function.
const PipeWireLibrary* PipeWire();

} // namespace tool
