// Talks to the desktop's portal in a process of its own, which may wait for a person, and which
// belongs to the session's user even if this one is root.
#pragma once

#include "tool/screen/rectangle.h"
#include "tool/system/descriptor.h"

#include <cstdint>
#include <memory>
#include <string>
#include <sys/types.h>

namespace tool {

// A stream, or the reason why there is none.
struct PortalReport
{
    Descriptor pipewire; // not open: no stream
    uint32_t node = 0;
    std::string reason; // a sentence without its full stop
};

class PortalProcess
{
public:
    // Asks the desktop for this screen; whichever the person then chooses is the one. Not for a
    // process with threads. Null if there can be no process.
    static std::unique_ptr<PortalProcess> Start(const Rectangle& screen);
    PortalProcess(const PortalProcess&) = delete;
    PortalProcess& operator=(const PortalProcess&) = delete;
    // Ends the session, with its dialog if that is still open.
    ~PortalProcess();

    // Can be read from when there is a report, and again when the session has ended.
    int Number() const { return m_socket.Number(); }
    PortalReport Read() const;

private:
    PortalProcess(pid_t id, Descriptor socket) : m_nId(id), m_socket(std::move(socket)) {}

    pid_t m_nId;
    Descriptor m_socket;
};

} // namespace tool
