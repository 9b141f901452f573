#include "tool/screen/portal/pipewire_library.h"

#include "tool/system/shared_library.h"

#include <optional>

namespace tool {
namespace {

std::optional<PipeWireLibrary> Load()
{
    SharedLibrary symbols("libpipewire-0.3.so.0");
    PipeWireLibrary library;
    symbols.Find(library.contextConnectFd, "pw_context_connect_fd");
    symbols.Find(library.contextDestroy, "pw_context_destroy");
    symbols.Find(library.contextNew, "pw_context_new");
    symbols.Find(library.coreDisconnect, "pw_core_disconnect");
    symbols.Find(library.init, "pw_init");
    symbols.Find(library.loopDestroy, "pw_loop_destroy");
    symbols.Find(library.loopNew, "pw_loop_new");
    symbols.Find(library.propertiesNew, "pw_properties_new");
    symbols.Find(library.streamAddListener, "pw_stream_add_listener");
    symbols.Find(library.streamConnect, "pw_stream_connect");
    symbols.Find(library.streamDequeueBuffer, "pw_stream_dequeue_buffer");
    symbols.Find(library.streamDestroy, "pw_stream_destroy");
    symbols.Find(library.streamNew, "pw_stream_new");
    symbols.Find(library.streamQueueBuffer, "pw_stream_queue_buffer");
    symbols.Find(library.streamUpdateParams, "pw_stream_update_params");
    if (!symbols.IsComplete()) {
        return std::nullopt;
    }
    library.init(nullptr, nullptr);
    return library;
}

} // namespace

const PipeWireLibrary* PipeWire()
{
    static const std::optional<PipeWireLibrary> library = Load();
    return library ? &*library : nullptr;
}

} // namespace tool
