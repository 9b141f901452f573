#include "tool/screen/wayland/connection.h"

#include "tool/screen/wayland/wayland_client.h"
#include "tool/system/descriptor.h"
#include "tool/system/environment.h"
#include "tool/system/poll_until.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>

namespace tool {
namespace {

// An absolute path, or the name of a socket in the user's runtime directory.
std::string SocketPath(const std::string& name)
{
    return name.starts_with('/') ? name : Variable("XDG_RUNTIME_DIR") + "/" + name;
}

// The library's own function waits for as long as a compositor does not accept connections.
Descriptor Connect(const std::string& path, SteadyTime until)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return {};
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    while (connect(socket.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
           0) {
        // The compositor's queue of connections is full.
        if (errno != EAGAIN || std::chrono::steady_clock::now() >= until) {
            return {};
        }
        constexpr std::chrono::milliseconds interval{5};
        std::this_thread::sleep_for(interval);
    }
    return socket;
}

} // namespace

void ForgetProxy::operator()(void* proxy) const
{
    Wayland()->proxyDestroy(static_cast<wl_proxy*>(proxy));
}

std::unique_ptr<Connection> Connection::Open(const std::string& name, SteadyTime until)
{
    if (name.empty() || Wayland() == nullptr) {
        return nullptr;
    }
    Descriptor socket = Connect(SocketPath(name), until);
    if (!socket.IsOpen()) {
        return nullptr;
    }
    wl_display* display = Wayland()->displayConnectToFd(socket.Release());
    return display == nullptr ? nullptr : std::unique_ptr<Connection>(new Connection(display));
}

Connection::~Connection()
{
    Wayland()->displayDisconnect(m_pDisplay);
}

bool Connection::Pump(SteadyTime until)
{
    const WaylandLibrary& wayland = *Wayland();
    if (wayland.displayPrepareRead(m_pDisplay) != 0) {
        return wayland.displayDispatchPending(m_pDisplay) >= 0;
    }
    // What cannot be sent now is sent with the next call.
    if (wayland.displayFlush(m_pDisplay) < 0 && errno != EAGAIN) {
        wayland.displayCancelRead(m_pDisplay);
        return false;
    }
    pollfd server{wayland.displayGetFd(m_pDisplay), POLLIN, 0};
    if (!PollUntil(server, until)) {
        wayland.displayCancelRead(m_pDisplay);
        return true;
    }
    return wayland.displayReadEvents(m_pDisplay) == 0 &&
           wayland.displayDispatchPending(m_pDisplay) >= 0;
}

bool Connection::Synchronise(SteadyTime until)
{
    bool done = false;
    const wl_callback_listener listener{
        [](void* data, wl_callback* /*callback*/, uint32_t /*serial*/) {
            *static_cast<bool*>(data) = true;
        }};
    const Proxy<wl_callback> callback(wl_display_sync(m_pDisplay));
    if (!callback) {
        return false;
    }
    wl_callback_add_listener(callback.get(), &listener, &done);
    while (!done && std::chrono::steady_clock::now() < until) {
        if (!Pump(until)) {
            return false;
        }
    }
    return done;
}

} // namespace tool
