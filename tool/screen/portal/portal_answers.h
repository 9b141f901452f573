// What the ScreenCast portal answers. The answers come from another program, so nothing in them is
// taken for granted.
#pragma once

#include "tool/bus/bus_library.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

struct PortalProperties
{
    uint32_t version = 0;
    uint32_t sourceTypes = 0; // a set: 1 monitors, 2 windows
    uint32_t cursorModes = 0; // a set: 1 hidden, 2 part of the picture, 4 apart from it
};

// The end of a request.
struct PortalResponse
{
    static constexpr uint32_t done = 0;
    static constexpr uint32_t declined = 1;
    static constexpr uint32_t otherwise = 2;

    uint32_t code = otherwise;
    std::string session;          // a valid object path, or empty
    std::string token;            // to be told the next time
    std::optional<uint32_t> node; // where the first stream is in PipeWire's graph
};

// The reply to GetAll.
PortalProperties ReadProperties(DBusMessage* reply);

// The signal Response.
PortalResponse ReadResponse(DBusMessage* signal);

// The object path that a method has returned, or an empty string.
std::string ReadHandle(DBusMessage* reply);

} // namespace tool
