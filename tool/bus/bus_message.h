#pragma once

#include "tool/bus/bus_library.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tool {

struct FreeBusMessage
{
    void operator()(DBusMessage* message) const { Bus()->messageUnref(message); }
};

// A message; null if there is none.
using BusMessage = std::unique_ptr<DBusMessage, FreeBusMessage>;

// The arguments of a method, appended one by one.
class BusArguments
{
public:
    explicit BusArguments(DBusMessage* message) { Bus()->iterInitAppend(message, &m_end); }

    // Text as the bus takes it: up to the first zero byte, and with question marks if it is not
    // UTF-8.
    void AddText(std::string text);
    // `text`: a valid object path.
    void AddPath(const std::string& path);
    // `type`: DBUS_TYPE_UINT32, DBUS_TYPE_INT32 or DBUS_TYPE_BOOLEAN.
    void AddNumber(int type, uint32_t number);
    void AddEmptyArray(const char* element);

    // Adds a dictionary of named values: OpenOptions(), any number of options, CloseOptions().
    void OpenOptions();
    void AddOption(const std::string& name, const std::string& text);
    void AddOption(const std::string& name, int type, uint32_t number);
    void CloseOptions();

private:
    template <typename Value>
    void AddVariant(const std::string& name, int type, const Value& value);

    DBusMessageIter m_end{};
    DBusMessageIter m_options{};
};

} // namespace tool
