#include "tool/bus/bus_values.h"

namespace tool {

BusValues::BusValues(DBusMessage* message)
    : m_bThere(message != nullptr && Bus()->iterInit(message, &m_place) != 0)
{
}

int BusValues::Type() const
{
    return m_bThere ? Bus()->iterGetArgType(&m_place) : DBUS_TYPE_INVALID;
}

bool BusValues::IsThere() const
{
    return Type() != DBUS_TYPE_INVALID;
}

void BusValues::Next()
{
    m_bThere = IsThere() && Bus()->iterNext(&m_place) != 0;
}

std::optional<std::string> BusValues::Text() const
{
    const char* text = nullptr;
    if (Type() != DBUS_TYPE_STRING) {
        return std::nullopt;
    }
    Bus()->iterGetBasic(&m_place, &text);
    return text;
}

std::optional<std::string> BusValues::Path() const
{
    const char* path = nullptr;
    if (Type() != DBUS_TYPE_OBJECT_PATH) {
        return std::nullopt;
    }
    Bus()->iterGetBasic(&m_place, &path);
    return path;
}

std::optional<uint32_t> BusValues::Number() const
{
    uint32_t number = 0;
    if (Type() != DBUS_TYPE_UINT32) {
        return std::nullopt;
    }
    Bus()->iterGetBasic(&m_place, &number);
    return number;
}

std::optional<int32_t> BusValues::SignedNumber() const
{
    int32_t number = 0;
    if (Type() != DBUS_TYPE_INT32) {
        return std::nullopt;
    }
    Bus()->iterGetBasic(&m_place, &number);
    return number;
}

Descriptor BusValues::OpenFile() const
{
    int number = -1;
    if (Type() == DBUS_TYPE_UNIX_FD) {
        Bus()->iterGetBasic(&m_place, &number);
    }
    return Descriptor(number);
}

BusValues BusValues::Inside() const
{
    BusValues inside;
    switch (Type()) {
    case DBUS_TYPE_ARRAY:
    case DBUS_TYPE_STRUCT:
    case DBUS_TYPE_VARIANT:
    case DBUS_TYPE_DICT_ENTRY:
        Bus()->iterRecurse(&m_place, &inside.m_place);
        inside.m_bThere = true;
        break;
    default:
        break;
    }
    return inside;
}

} // namespace tool
