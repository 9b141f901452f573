#include "tool/screen/portal/portal_answers.h"

#include "tool/bus/bus_values.h"

namespace tool {
namespace {

// Newer portals return paths as such, older ones as text.
std::string PathIn(const BusValues& value)
{
    const std::string path = value.Path().value_or(value.Text().value_or(""));
    return Bus()->validatePath(path.c_str(), nullptr) != 0 ? path : std::string();
}

std::optional<uint32_t> FirstNode(const BusValues& streams)
{
    return streams.Inside().Inside().Number();
}

} // namespace

PortalProperties ReadProperties(DBusMessage* reply)
{
    PortalProperties properties;
    ForEachOption(BusValues(reply), [&](const std::string& name, const BusValues& value) {
        const uint32_t number = value.Number().value_or(0);
        if (name == "version") {
            properties.version = number;
        } else if (name == "AvailableSourceTypes") {
            properties.sourceTypes = number;
        } else if (name == "AvailableCursorModes") {
            properties.cursorModes = number;
        }
    });
    return properties;
}

PortalResponse ReadResponse(DBusMessage* signal)
{
    PortalResponse response;
    BusValues values(signal);
    response.code = values.Number().value_or(PortalResponse::otherwise);
    values.Next();
    ForEachOption(values, [&](const std::string& name, const BusValues& value) {
        if (name == "session_handle") {
            response.session = PathIn(value);
        } else if (name == "restore_token") {
            response.token = value.Text().value_or("");
        } else if (name == "streams") {
            response.node = FirstNode(value);
        }
    });
    return response;
}

std::string ReadHandle(DBusMessage* reply)
{
    return PathIn(BusValues(reply));
}

} // namespace tool
