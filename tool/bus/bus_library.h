// The D-Bus client library, loaded on first use, because few runs of the program need it.
#pragma once

#include <dbus/dbus.h>

namespace tool {

// The functions used, named without "dbus_".
struct BusLibrary
{
    decltype(&dbus_bus_add_match) busAddMatch = nullptr;
    decltype(&dbus_bus_register) busRegister = nullptr;
    decltype(&dbus_connection_close) connectionClose = nullptr;
    decltype(&dbus_connection_open_private) connectionOpenPrivate = nullptr;
    decltype(&dbus_connection_pop_message) connectionPopMessage = nullptr;
    decltype(&dbus_connection_read_write) connectionReadWrite = nullptr;
    decltype(&dbus_connection_send) connectionSend = nullptr;
    decltype(&dbus_connection_send_with_reply_and_block) connectionSendAndWait = nullptr;
    decltype(&dbus_connection_unref) connectionUnref = nullptr;
    decltype(&dbus_error_free) errorFree = nullptr;
    decltype(&dbus_error_init) errorInit = nullptr;
    decltype(&dbus_message_get_path) messageGetPath = nullptr;
    decltype(&dbus_message_get_sender) messageGetSender = nullptr;
    decltype(&dbus_message_is_signal) messageIsSignal = nullptr;
    decltype(&dbus_message_iter_append_basic) iterAppendBasic = nullptr;
    decltype(&dbus_message_iter_close_container) iterCloseContainer = nullptr;
    decltype(&dbus_message_iter_get_arg_type) iterGetArgType = nullptr;
    decltype(&dbus_message_iter_get_basic) iterGetBasic = nullptr;
    decltype(&dbus_message_iter_init) iterInit = nullptr;
    decltype(&dbus_message_iter_init_append) iterInitAppend = nullptr;
    decltype(&dbus_message_iter_next) iterNext = nullptr;
    decltype(&dbus_message_iter_open_container) iterOpenContainer = nullptr;
    decltype(&dbus_message_iter_recurse) iterRecurse = nullptr;
    decltype(&dbus_message_new_method_call) messageNewMethodCall = nullptr;
    decltype(&dbus_message_set_auto_start) messageSetAutoStart = nullptr;
    decltype(&dbus_message_set_no_reply) messageSetNoReply = nullptr;
    decltype(&dbus_message_unref) messageUnref = nullptr;
    decltype(&dbus_validate_path) validatePath = nullptr;
    decltype(&dbus_validate_utf8) validateUtf8 = nullptr;
};

// Loads the library on the first call. Returns null if it is missing or lacks a function.
const BusLibrary* Bus();

} // namespace tool
