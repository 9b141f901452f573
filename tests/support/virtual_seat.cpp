#include "tests/support/virtual_seat.h"

#include <array>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

namespace {

// The two protocols, as far as they are used. A compositor may have them in any version.
extern const wl_interface kPointer;
extern const wl_interface kKeyboard;

std::array<const wl_interface*, 8> g_noTypes{};
std::array<const wl_interface*, 2> g_newPointer{&wl_seat_interface, &kPointer};
std::array<const wl_interface*, 2> g_newKeyboard{&wl_seat_interface, &kKeyboard};

const std::array<wl_message, 5> kPointerRequests{{{"motion", "uff", g_noTypes.data()},
                                                  {"motion_absolute", "uuuuu", g_noTypes.data()},
                                                  {"button", "uuu", g_noTypes.data()},
                                                  {"axis", "uuf", g_noTypes.data()},
                                                  {"frame", "", g_noTypes.data()}}};
const std::array<wl_message, 3> kKeyboardRequests{{{"keymap", "uhu", g_noTypes.data()},
                                                   {"key", "uuu", g_noTypes.data()},
                                                   {"modifiers", "uuuu", g_noTypes.data()}}};
const wl_message kCreatePointer{"create_virtual_pointer", "?on", g_newPointer.data()};
const wl_message kCreateKeyboard{"create_virtual_keyboard", "on", g_newKeyboard.data()};

const wl_interface kPointer{"zwlr_virtual_pointer_v1", 1, kPointerRequests.size(),
                            kPointerRequests.data(),   0, nullptr};
const wl_interface kKeyboard{"zwp_virtual_keyboard_v1", 1, kKeyboardRequests.size(),
                             kKeyboardRequests.data(),  0, nullptr};
const wl_interface kPointerManager{
    "zwlr_virtual_pointer_manager_v1", 1, 1, &kCreatePointer, 0, nullptr};
const wl_interface kKeyboardManager{
    "zwp_virtual_keyboard_manager_v1", 1, 1, &kCreateKeyboard, 0, nullptr};

constexpr uint32_t kMotionAbsolute = 1;
constexpr uint32_t kButton = 2;
constexpr uint32_t kFrame = 4;
constexpr uint32_t kKeymap = 0;
constexpr uint32_t kKey = 1;

// The compositor reads its own files for it.
constexpr char kKeymapText[] = "xkb_keymap { xkb_keycodes { include \"evdev+aliases(qwerty)\" };"
                               " xkb_types { include \"complete\" };"
                               " xkb_compat { include \"complete\" };"
                               " xkb_symbols { include \"pc+us+inet(evdev)\" }; };";

struct Globals
{
    wl_seat* seat = nullptr;
    wl_proxy* pointers = nullptr;
    wl_proxy* keyboards = nullptr;
};

void Found(void* data, wl_registry* registry, uint32_t name, const char* interface,
           uint32_t /*version*/)
{
    auto& globals = *static_cast<Globals*>(data);
    const auto bind = [&](const wl_interface& wanted) {
        return static_cast<wl_proxy*>(wl_registry_bind(registry, name, &wanted, 1));
    };
    if (std::strcmp(interface, wl_seat_interface.name) == 0) {
        globals.seat = reinterpret_cast<wl_seat*>(bind(wl_seat_interface)); // NOLINT
    } else if (std::strcmp(interface, kPointerManager.name) == 0) {
        globals.pointers = bind(kPointerManager);
    } else if (std::strcmp(interface, kKeyboardManager.name) == 0) {
        globals.keyboards = bind(kKeyboardManager);
    }
}

void Lost(void* /*data*/, wl_registry* /*registry*/, uint32_t /*name*/) {}

constexpr wl_registry_listener kListener{Found, Lost};

wl_proxy* Create(wl_proxy* manager, wl_seat* seat, const wl_interface& what)
{
    return wl_proxy_marshal_flags(manager, 0, &what, 1, 0, seat, nullptr);
}

void SendKeymap(wl_proxy* keyboard)
{
    const int file = memfd_create("keymap", MFD_CLOEXEC);
    if (write(file, kKeymapText, sizeof kKeymapText) == sizeof kKeymapText) {
        wl_proxy_marshal(keyboard, kKeymap, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                         static_cast<uint32_t>(sizeof kKeymapText));
    }
    close(file); // the request holds a copy
}

} // namespace

struct VirtualSeat::Connection
{
    wl_display* display = wl_display_connect(nullptr);
    wl_proxy* pointer = nullptr;
    wl_proxy* keyboard = nullptr;
    uint32_t time = 1; // in milliseconds; later for each event
};

VirtualSeat::VirtualSeat() : m_pConnection(std::make_unique<Connection>())
{
    wl_display* display = m_pConnection->display;
    if (display == nullptr) {
        return;
    }
    Globals globals;
    wl_registry* registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &kListener, &globals);
    wl_display_roundtrip(display);
    if (globals.seat != nullptr && globals.pointers != nullptr && globals.keyboards != nullptr) {
        m_pConnection->pointer = Create(globals.pointers, globals.seat, kPointer);
        m_pConnection->keyboard = Create(globals.keyboards, globals.seat, kKeyboard);
        SendKeymap(m_pConnection->keyboard);
        wl_display_roundtrip(display);
    }
    wl_registry_destroy(registry);
}

VirtualSeat::~VirtualSeat()
{
    if (m_pConnection->display != nullptr) {
        wl_display_disconnect(m_pConnection->display);
    }
}

bool VirtualSeat::Good() const
{
    return m_pConnection->keyboard != nullptr && wl_display_get_error(m_pConnection->display) == 0;
}

void VirtualSeat::Move(QPoint place, QSize layout)
{
    wl_proxy_marshal(m_pConnection->pointer, kMotionAbsolute, m_pConnection->time++,
                     static_cast<uint32_t>(place.x()), static_cast<uint32_t>(place.y()),
                     static_cast<uint32_t>(layout.width()), static_cast<uint32_t>(layout.height()));
    wl_proxy_marshal(m_pConnection->pointer, kFrame);
    wl_display_roundtrip(m_pConnection->display);
}

void VirtualSeat::HoldButton(uint32_t button, bool down)
{
    wl_proxy_marshal(m_pConnection->pointer, kButton, m_pConnection->time++, button,
                     uint32_t(down));
    wl_proxy_marshal(m_pConnection->pointer, kFrame);
    wl_display_roundtrip(m_pConnection->display);
}

void VirtualSeat::HoldKey(uint32_t key, bool down)
{
    wl_proxy_marshal(m_pConnection->keyboard, kKey, m_pConnection->time++, key, uint32_t(down));
    wl_display_roundtrip(m_pConnection->display);
}
