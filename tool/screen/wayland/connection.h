// A connection to a Wayland compositor that never waits longer than it is told to.
#pragma once

#include "tool/system/steady_time.h"

#include <memory>
#include <string>

struct wl_display;
struct wl_proxy;

namespace tool {

// Forgets an object of the protocol. What belongs to a connection must go before it.
struct ForgetProxy
{
    void operator()(void* proxy) const;
};

template <typename Object>
using Proxy = std::unique_ptr<Object, ForgetProxy>;

class Connection
{
public:
    // `name` is that of the environment variable WAYLAND_DISPLAY. Returns null if there is no
    // library, or no compositor answers by that time.
    static std::unique_ptr<Connection> Open(const std::string& name, SteadyTime until);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    wl_display* Display() const { return m_pDisplay; }

    // Sends what is to be sent, and waits for events until that time at most; those that are there
    // are handled in any case. Returns false if the compositor is gone or has broken the protocol.
    bool Pump(SteadyTime until);
    // Waits until the compositor has answered everything so far. Returns false if it does not.
    bool Synchronise(SteadyTime until);

private:
    explicit Connection(wl_display* display) : m_pDisplay(display) {}

    wl_display* m_pDisplay;
};

} // namespace tool
