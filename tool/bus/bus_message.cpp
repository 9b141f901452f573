#include "tool/bus/bus_message.h"

#include <array>

namespace tool {

void BusArguments::AddText(std::string text)
{
    text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
    // The bus closes the connection of a program whose text is not UTF-8, as file names may be.
    if (Bus()->validateUtf8(text.c_str(), nullptr) == 0) {
        for (char& byte : text) {
            byte = static_cast<signed char>(byte) < 0 ? '?' : byte;
        }
    }
    const char* start = text.c_str();
    Bus()->iterAppendBasic(&m_end, DBUS_TYPE_STRING, &start);
}

void BusArguments::AddPath(const std::string& path)
{
    const char* start = path.c_str();
    Bus()->iterAppendBasic(&m_end, DBUS_TYPE_OBJECT_PATH, &start);
}

void BusArguments::AddNumber(int type, uint32_t number)
{
    Bus()->iterAppendBasic(&m_end, type, &number);
}

void BusArguments::AddEmptyArray(const char* element)
{
    DBusMessageIter array;
    Bus()->iterOpenContainer(&m_end, DBUS_TYPE_ARRAY, element, &array);
    Bus()->iterCloseContainer(&m_end, &array);
}

void BusArguments::OpenOptions()
{
    Bus()->iterOpenContainer(&m_end, DBUS_TYPE_ARRAY, "{sv}", &m_options);
}

void BusArguments::AddOption(const std::string& name, const std::string& text)
{
    AddVariant(name, DBUS_TYPE_STRING, text.c_str());
}

void BusArguments::AddOption(const std::string& name, int type, uint32_t number)
{
    AddVariant(name, type, number);
}

void BusArguments::CloseOptions()
{
    Bus()->iterCloseContainer(&m_end, &m_options);
}

template <typename Value>
void BusArguments::AddVariant(const std::string& name, int type, const Value& value)
{
    const std::array<char, 2> signature{static_cast<char>(type), '\0'};
    const char* key = name.c_str();
    DBusMessageIter entry;
    DBusMessageIter variant;
    Bus()->iterOpenContainer(&m_options, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
    Bus()->iterAppendBasic(&entry, DBUS_TYPE_STRING, &key);
    Bus()->iterOpenContainer(&entry, DBUS_TYPE_VARIANT, signature.data(), &variant);
    Bus()->iterAppendBasic(&variant, type, &value);
    Bus()->iterCloseContainer(&entry, &variant);
    Bus()->iterCloseContainer(&m_options, &entry);
}

} // namespace tool
