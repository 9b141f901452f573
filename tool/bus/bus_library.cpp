#include "tool/bus/bus_library.h"

#include "tool/system/shared_library.h"

#include <optional>

namespace tool {
namespace {

std::optional<BusLibrary> Load()
{
    SharedLibrary symbols("libdbus-1.so.3");
    BusLibrary library;
    symbols.Find(library.busAddMatch, "dbus_bus_add_match");
    symbols.Find(library.busRegister, "dbus_bus_register");
    symbols.Find(library.connectionClose, "dbus_connection_close");
    symbols.Find(library.connectionOpenPrivate, "dbus_connection_open_private");
    symbols.Find(library.connectionPopMessage, "dbus_connection_pop_message");
    symbols.Find(library.connectionReadWrite, "dbus_connection_read_write");
    symbols.Find(library.connectionSend, "dbus_connection_send");
    symbols.Find(library.connectionSendAndWait, "dbus_connection_send_with_reply_and_block");
    symbols.Find(library.connectionUnref, "dbus_connection_unref");
    symbols.Find(library.errorFree, "dbus_error_free");
    symbols.Find(library.errorInit, "dbus_error_init");
    symbols.Find(library.messageGetPath, "dbus_message_get_path");
    symbols.Find(library.messageGetSender, "dbus_message_get_sender");
    symbols.Find(library.messageIsSignal, "dbus_message_is_signal");
    symbols.Find(library.iterAppendBasic, "dbus_message_iter_append_basic");
    symbols.Find(library.iterCloseContainer, "dbus_message_iter_close_container");
    symbols.Find(library.iterGetArgType, "dbus_message_iter_get_arg_type");
    symbols.Find(library.iterGetBasic, "dbus_message_iter_get_basic");
    symbols.Find(library.iterInit, "dbus_message_iter_init");
    symbols.Find(library.iterInitAppend, "dbus_message_iter_init_append");
    symbols.Find(library.iterNext, "dbus_message_iter_next");
    symbols.Find(library.iterOpenContainer, "dbus_message_iter_open_container");
    symbols.Find(library.iterRecurse, "dbus_message_iter_recurse");
    symbols.Find(library.messageNewMethodCall, "dbus_message_new_method_call");
    symbols.Find(library.messageSetAutoStart, "dbus_message_set_auto_start");
    symbols.Find(library.messageSetNoReply, "dbus_message_set_no_reply");
    symbols.Find(library.messageUnref, "dbus_message_unref");
    symbols.Find(library.validatePath, "dbus_validate_path");
    symbols.Find(library.validateUtf8, "dbus_validate_utf8");
    return symbols.IsComplete() ? std::optional(library) : std::nullopt;
}

} // namespace

const BusLibrary* Bus()
{
    static const std::optional<BusLibrary> library = Load();
    return library ? &*library : nullptr;
}

} // namespace tool
