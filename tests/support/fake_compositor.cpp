#include "tests/support/fake_compositor.h"

#include "wlr-screencopy-unstable-v1-server-header.h"
#include "xdg-output-unstable-v1-server-header.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>
#include <wayland-server-core.h>
#include <wayland-server-protocol.h>

// The clients' requests and bindings, with the compositor or the output as data.
struct FakeRequests
{
    static RunningCompositor& Of(void* data) { return *static_cast<RunningCompositor*>(data); }
    static RunningCompositor& Of(wl_resource* resource)
    {
        return Of(wl_resource_get_user_data(resource));
    }
    static void Destroy(wl_client* /*client*/, wl_resource* resource)
    {
        wl_resource_destroy(resource);
    }

    static void BindOutput(wl_client* client, void* data, uint32_t version, uint32_t id)
    {
        static const struct wl_output_interface requests = {&Destroy};
        const auto& output = *static_cast<FakeOutput*>(data);
        wl_resource* resource =
            wl_resource_create(client, &wl_output_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(resource, &requests, data, nullptr);
        wl_output_send_geometry(resource, output.x, output.y, 0, 0, 0, "none", "none",
                                output.transform);
        wl_output_send_mode(resource, 0, 640, 480, 60000); // one that is not used
        wl_output_send_mode(resource, WL_OUTPUT_MODE_CURRENT, output.width, output.height, 60000);
        wl_output_send_done(resource);
    }

    static void GetPlace(wl_client* client, wl_resource* manager, uint32_t id, wl_resource* output)
    {
        static const struct zxdg_output_v1_interface requests = {&Destroy};
        wl_resource* place = wl_resource_create(client, &zxdg_output_v1_interface,
                                                wl_resource_get_version(manager), id);
        wl_resource_set_implementation(place, &requests, nullptr, nullptr);
        const auto& shown = *static_cast<FakeOutput*>(wl_resource_get_user_data(output));
        zxdg_output_v1_send_logical_position(place, shown.x, shown.y);
        zxdg_output_v1_send_logical_size(place, shown.width, shown.height);
        zxdg_output_v1_send_done(place);
    }
    static void BindPlaces(wl_client* client, void* data, uint32_t version, uint32_t id)
    {
        static const struct zxdg_output_manager_v1_interface requests = {&Destroy, &GetPlace};
        wl_resource* resource = wl_resource_create(client, &zxdg_output_manager_v1_interface,
                                                   static_cast<int>(version), id);
        wl_resource_set_implementation(resource, &requests, data, nullptr);
    }

    static void Copy(wl_client* /*client*/, wl_resource* frame, wl_resource* buffer)
    {
        Of(frame).Copy(frame, buffer, false);
    }
    static void CopyChanged(wl_client* /*client*/, wl_resource* frame, wl_resource* buffer)
    {
        Of(frame).Copy(frame, buffer, true);
    }
    static void ForgetFrame(wl_resource* frame)
    {
        RunningCompositor& compositor = Of(frame);
        compositor.m_waiting.remove_if([&](const auto& one) { return one.first == frame; });
        compositor.m_nWaiting = static_cast<int>(compositor.m_waiting.size());
        compositor.m_used.remove(frame);
    }
    static void Capture(wl_client* client, wl_resource* manager, uint32_t id, int32_t withPointer,
                        wl_resource* /*output*/)
    {
        static const struct zwlr_screencopy_frame_v1_interface requests = {&Copy, &Destroy,
                                                                           &CopyChanged};
        wl_resource* frame = wl_resource_create(client, &zwlr_screencopy_frame_v1_interface,
                                                wl_resource_get_version(manager), id);
        wl_resource_set_implementation(frame, &requests, wl_resource_get_user_data(manager),
                                       &ForgetFrame);
        Of(manager).m_nWithPointer += withPointer;
        Of(manager).Answer(frame);
    }
    static void BindScreencopy(wl_client* client, void* data, uint32_t version, uint32_t id)
    {
        static const struct zwlr_screencopy_manager_v1_interface requests = {&Capture, nullptr,
                                                                             &Destroy};
        wl_resource* resource = wl_resource_create(client, &zwlr_screencopy_manager_v1_interface,
                                                   static_cast<int>(version), id);
        wl_resource_set_implementation(resource, &requests, data, nullptr);
    }
};

RunningCompositor::RunningCompositor(FakeCompositor behaviour)
    : m_behaviour(std::move(behaviour)),
      m_pDisplay(wl_display_create())
{
    wl_log_set_handler_server([](const char* /*format*/, va_list /*arguments*/) {});
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, Name().c_str(), sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        listen(socket, 8) == 0) {
        wl_display_add_socket_fd(m_pDisplay, socket);
    }
    Offer();
    m_thread = std::thread([this] { Run(); });
}

RunningCompositor::~RunningCompositor()
{
    m_bStopped = true;
    m_thread.join();
    wl_display_destroy_clients(m_pDisplay);
    wl_display_destroy(m_pDisplay);
}

std::string RunningCompositor::Name() const
{
    return m_folder.filePath("wayland").toStdString();
}

void RunningCompositor::Offer()
{
    wl_display_init_shm(m_pDisplay);
    for (const uint32_t format : {0x34324258U, 0x34324241U, 0x30335258U, 0x30335241U, 0x30334258U,
                                  0x30334241U, 0x34324752U, 0x34324742U, 0x36314752U}) {
        wl_display_add_shm_format(m_pDisplay, format);
    }
    for (FakeOutput& output : m_behaviour.outputs) {
        m_globals.push_back(wl_global_create(m_pDisplay, &wl_output_interface, 4, &output,
                                             &FakeRequests::BindOutput));
    }
    if (m_behaviour.tellsPlaces) {
        wl_global_create(m_pDisplay, &zxdg_output_manager_v1_interface, 3, this,
                         &FakeRequests::BindPlaces);
    }
    if (m_behaviour.screencopyVersion > 0) {
        wl_global_create(m_pDisplay, &zwlr_screencopy_manager_v1_interface,
                         static_cast<int>(m_behaviour.screencopyVersion), this,
                         &FakeRequests::BindScreencopy);
    }
}

void RunningCompositor::Run()
{
    constexpr int milliseconds = 2;
    while (!m_bStopped) {
        std::vector<std::function<void()>> work;
        {
            const std::lock_guard lock(m_mutex);
            work.swap(m_work);
        }
        for (const auto& one : work) {
            one();
        }
        wl_display_flush_clients(m_pDisplay);
        wl_event_loop_dispatch(wl_display_get_event_loop(m_pDisplay), milliseconds);
        wl_display_flush_clients(m_pDisplay);
    }
}

// Waits until it is done.
void RunningCompositor::Post(const std::function<void()>& work)
{
    std::atomic<bool> done = false;
    {
        const std::lock_guard lock(m_mutex);
        m_work.emplace_back([&] {
            work();
            done = true;
            done.notify_one();
        });
    }
    done.wait(false);
}

void RunningCompositor::Change(const std::function<void(FakeCompositor&)>& change)
{
    Post([&] {
        change(m_behaviour);
        m_nNextAnswer = 0;
    });
}

void RunningCompositor::Damage()
{
    Post([this] {
        m_bDamaged = m_waiting.empty();
        const auto waiting = std::exchange(m_waiting, {});
        m_nWaiting = 0;
        for (const auto& [frame, buffer] : waiting) {
            Fill(frame, buffer);
        }
    });
}

void RunningCompositor::RemoveOutputs()
{
    Post([this] {
        for (wl_global* global : m_globals) {
            wl_global_remove(global);
        }
    });
}

void RunningCompositor::Answer(wl_resource* frame)
{
    ++m_nFrames;
    switch (m_behaviour.answers.at(m_nNextAnswer)) {
    case FakeCompositor::Answer::Failed:
        zwlr_screencopy_frame_v1_send_failed(frame);
        break;
    case FakeCompositor::Answer::Disconnected:
        wl_client_post_no_memory(wl_resource_get_client(frame));
        return;
    case FakeCompositor::Answer::NotDescribed:
        zwlr_screencopy_frame_v1_send_ready(frame, 0, 0, 0);
        break;
    case FakeCompositor::Answer::DescribedTwice:
        Describe(frame);
        Describe(frame);
        return;
    default:
        Describe(frame);
        return; // the answer goes on when it is to be copied
    }
    m_nNextAnswer = std::min(m_nNextAnswer + 1, m_behaviour.answers.size() - 1);
}

void RunningCompositor::Describe(wl_resource* frame)
{
    zwlr_screencopy_frame_v1_send_buffer(frame, m_behaviour.format, m_behaviour.width,
                                         m_behaviour.height, m_behaviour.stride);
    if (wl_resource_get_version(frame) >= ZWLR_SCREENCOPY_FRAME_V1_BUFFER_DONE_SINCE_VERSION) {
        // Memory of a graphics card is offered too.
        zwlr_screencopy_frame_v1_send_linux_dmabuf(frame, m_behaviour.format, m_behaviour.width,
                                                   m_behaviour.height);
        zwlr_screencopy_frame_v1_send_buffer_done(frame);
    }
}

void RunningCompositor::Copy(wl_resource* frame, wl_resource* buffer, bool withDamage)
{
    if (std::find(m_used.begin(), m_used.end(), frame) != m_used.end()) {
        wl_resource_post_error(frame, ZWLR_SCREENCOPY_FRAME_V1_ERROR_ALREADY_USED, "used twice");
        return;
    }
    m_used.push_back(frame);
    const auto answer = m_behaviour.answers.at(m_nNextAnswer);
    m_nNextAnswer = std::min(m_nNextAnswer + 1, m_behaviour.answers.size() - 1);
    if (answer == FakeCompositor::Answer::FailedLater) {
        zwlr_screencopy_frame_v1_send_failed(frame);
    } else if (answer == FakeCompositor::Answer::DisconnectedLater) {
        wl_client_post_no_memory(wl_resource_get_client(frame));
    } else if (withDamage && !m_bDamaged) {
        m_waiting.emplace_back(frame, buffer);
        m_nWaiting = static_cast<int>(m_waiting.size());
    } else if (answer != FakeCompositor::Answer::Nothing) {
        m_bDamaged = false;
        Fill(frame, buffer);
    }
}

void RunningCompositor::Fill(wl_resource* frame, wl_resource* buffer)
{
    wl_shm_buffer* memory = wl_shm_buffer_get(buffer);
    const auto stride = static_cast<size_t>(wl_shm_buffer_get_stride(memory));
    const auto width = static_cast<size_t>(wl_shm_buffer_get_width(memory));
    const auto height = static_cast<size_t>(wl_shm_buffer_get_height(memory));
    const bool isPacked = m_behaviour.format == 0x34324752 || m_behaviour.format == 0x34324742;
    const size_t bytes = isPacked ? 3 : 4;
    wl_shm_buffer_begin_access(memory);
    auto* rows = static_cast<uint8_t*>(wl_shm_buffer_get_data(memory));
    std::memset(rows, 0, stride * height);
    for (size_t y = 0; y < height / 2; ++y) {
        for (size_t x = 0; x < width; ++x) {
            std::memcpy(rows + y * stride + x * bytes, &m_behaviour.pixel, bytes);
        }
    }
    wl_shm_buffer_end_access(memory);
    zwlr_screencopy_frame_v1_send_flags(frame, m_behaviour.upsideDown ? 1 : 0);
    zwlr_screencopy_frame_v1_send_ready(frame, 0, 0, 0);
}
