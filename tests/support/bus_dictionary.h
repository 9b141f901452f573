#pragma once

#include <dbus/dbus.h>
#include <functional>

// Named values, appended to a message.
class Dictionary
{
public:
    explicit Dictionary(DBusMessage* message)
    {
        dbus_message_iter_init_append(message, &m_end);
        dbus_message_iter_open_container(&m_end, DBUS_TYPE_ARRAY, "{sv}", &m_entries);
    }
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;
    ~Dictionary() { dbus_message_iter_close_container(&m_end, &m_entries); }

    void Add(const char* name, const char* signature,
             const std::function<void(DBusMessageIter*)>& append)
    {
        DBusMessageIter entry;
        DBusMessageIter variant;
        dbus_message_iter_open_container(&m_entries, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
        dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &name);
        dbus_message_iter_open_container(&entry, DBUS_TYPE_VARIANT, signature, &variant);
        append(&variant);
        dbus_message_iter_close_container(&entry, &variant);
        dbus_message_iter_close_container(&m_entries, &entry);
    }
    void Add(const char* name, const char* text)
    {
        Add(name, "s", [&](DBusMessageIter* value) {
            dbus_message_iter_append_basic(value, DBUS_TYPE_STRING, &text);
        });
    }
    void Add(const char* name, dbus_uint32_t number)
    {
        Add(name, "u", [&](DBusMessageIter* value) {
            dbus_message_iter_append_basic(value, DBUS_TYPE_UINT32, &number);
        });
    }
    void AddStream(dbus_uint32_t node)
    {
        Add("streams", "a(ua{sv})", [&](DBusMessageIter* value) {
            DBusMessageIter streams;
            DBusMessageIter stream;
            DBusMessageIter properties;
            dbus_message_iter_open_container(value, DBUS_TYPE_ARRAY, "(ua{sv})", &streams);
            dbus_message_iter_open_container(&streams, DBUS_TYPE_STRUCT, nullptr, &stream);
            dbus_message_iter_append_basic(&stream, DBUS_TYPE_UINT32, &node);
            dbus_message_iter_open_container(&stream, DBUS_TYPE_ARRAY, "{sv}", &properties);
            dbus_message_iter_close_container(&stream, &properties);
            dbus_message_iter_close_container(&streams, &stream);
            dbus_message_iter_close_container(value, &streams);
        });
    }

private:
    DBusMessageIter m_end{};
    DBusMessageIter m_entries{};
};
