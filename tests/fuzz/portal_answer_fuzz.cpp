// Answers of the desktop's portal: named values of any type, or a message as it comes from the bus.
#include "tests/fuzz/target.h"
#include "tool/bus/bus_message.h"
#include "tool/screen/portal/portal_answers.h"
#include "tool/screen/portal/restore_token.h"

#include <array>
#include <dbus/dbus.h>
#include <dlfcn.h>

namespace {

// Takes numbers from the input until it ends; then they are 0.
class Input
{
public:
    Input(const uint8_t* data, size_t size) : m_place(data), m_end(data + size) {}
    bool IsAtEnd() const { return m_place == m_end; }
    uint8_t Byte() { return IsAtEnd() ? uint8_t{0} : *m_place++; }
    uint32_t Number()
    {
        return static_cast<uint32_t>(Byte()) << 24U | static_cast<uint32_t>(Byte()) << 8U | Byte();
    }
    // Valid as text on the bus.
    std::string Text()
    {
        std::string text;
        for (size_t left = Byte() % 64; left > 0; --left) {
            text += static_cast<char>(Byte() % 95 + 32);
        }
        return text;
    }

private:
    const uint8_t* m_place;
    const uint8_t* m_end;
};

constexpr std::array<const char*, 8> signatures{"u", "s", "o", "b", "a(ua{sv})", "(uu)", "au", "v"};
constexpr std::array<const char*, 7> names{
    "session_handle",       "restore_token",        "streams", "version",
    "AvailableSourceTypes", "AvailableCursorModes", "position"};

void AppendOptions(Input& input, DBusMessageIter* to, int depth);

void AppendBasic(Input& input, DBusMessageIter* to, int type)
{
    const std::string text = type == DBUS_TYPE_OBJECT_PATH ? "/a/b" : input.Text();
    const char* start = text.c_str();
    const dbus_uint32_t number = type == DBUS_TYPE_BOOLEAN ? input.Byte() % 2U : input.Number();
    const bool isText = type == DBUS_TYPE_STRING || type == DBUS_TYPE_OBJECT_PATH;
    tool::Bus()->iterAppendBasic(to, type, isText ? static_cast<const void*>(&start) : &number);
}

// A complete value with one of the signatures.
void AppendValue(Input& input, DBusMessageIter* to, const std::string& signature, int depth)
{
    if (signature.size() == 1 && signature != "v") {
        AppendBasic(input, to, signature[0]);
        return;
    }
    DBusMessageIter inside;
    if (signature == "v") {
        const std::string inner = signatures[depth > 0 ? input.Byte() % signatures.size() : 0];
        tool::Bus()->iterOpenContainer(to, DBUS_TYPE_VARIANT, inner.c_str(), &inside);
        AppendValue(input, &inside, inner, depth - 1);
    } else if (signature[0] == 'a') {
        tool::Bus()->iterOpenContainer(to, DBUS_TYPE_ARRAY, signature.c_str() + 1, &inside);
        for (int left = input.Byte() % 4; left > 0; --left) {
            if (signature == "au") {
                AppendBasic(input, &inside, DBUS_TYPE_UINT32);
                continue;
            }
            DBusMessageIter stream;
            tool::Bus()->iterOpenContainer(&inside, DBUS_TYPE_STRUCT, nullptr, &stream);
            AppendBasic(input, &stream, DBUS_TYPE_UINT32);
            AppendOptions(input, &stream, depth - 1);
            tool::Bus()->iterCloseContainer(&inside, &stream);
        }
    } else {
        tool::Bus()->iterOpenContainer(to, DBUS_TYPE_STRUCT, nullptr, &inside);
        AppendBasic(input, &inside, DBUS_TYPE_UINT32);
        AppendBasic(input, &inside, DBUS_TYPE_UINT32);
    }
    tool::Bus()->iterCloseContainer(to, &inside);
}

void AppendOptions(Input& input, DBusMessageIter* to, int depth)
{
    DBusMessageIter options;
    tool::Bus()->iterOpenContainer(to, DBUS_TYPE_ARRAY, "{sv}", &options);
    for (int left = depth > 0 ? input.Byte() % 6 : 0; left > 0; --left) {
        const char* name = names[input.Byte() % names.size()];
        DBusMessageIter entry;
        tool::Bus()->iterOpenContainer(&options, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
        tool::Bus()->iterAppendBasic(&entry, DBUS_TYPE_STRING, &name);
        AppendValue(input, &entry, "v", depth);
        tool::Bus()->iterCloseContainer(&options, &entry);
    }
    tool::Bus()->iterCloseContainer(to, &options);
}

void Check(DBusMessage* message)
{
    const auto isPath = [](const std::string& path) {
        return path.empty() || tool::Bus()->validatePath(path.c_str(), nullptr) != 0;
    };
    const tool::PortalResponse response = tool::ReadResponse(message);
    Require(isPath(response.session), "a session is a path");
    Require(!tool::IsRestoreToken(response.token) || response.token.size() == 36,
            "a token is a UUID");
    Require(isPath(tool::ReadHandle(message)), "a handle is a path");
    tool::ReadProperties(message);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (tool::Bus() == nullptr) {
        return 0;
    }
    Input input(data, size);
    const int arguments = input.Byte() % 4;
    const tool::BusMessage message(
        tool::Bus()->messageNewMethodCall("a.b", "/a", "a.b", "Response"));
    DBusMessageIter end;
    tool::Bus()->iterInitAppend(message.get(), &end);
    for (int i = 0; i < arguments; ++i) {
        if (input.Byte() % 3 == 0) {
            AppendValue(input, &end, signatures[input.Byte() % signatures.size()], 3);
        } else {
            AppendOptions(input, &end, 3);
        }
    }
    Check(message.get());

    // The library refuses what is no message.
    static const auto demarshal = reinterpret_cast<decltype(&dbus_message_demarshal)>(
        dlsym(dlopen("libdbus-1.so.3", RTLD_LAZY | RTLD_LOCAL), "dbus_message_demarshal"));
    const tool::BusMessage raw(
        demarshal(reinterpret_cast<const char*>(data), static_cast<int>(size), nullptr));
    if (raw) {
        Check(raw.get());
    }
    return 0;
}
