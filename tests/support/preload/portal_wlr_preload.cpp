// For xdg-desktop-portal-wlr 0.7, which refuses a compositor that has no graphics card: it waits to
// be offered a graphics buffer. It is told of one, finds no way to make it, and uses memory.
#include <cstdint>
#include <cstring>
#include <dlfcn.h>

struct wl_proxy;

namespace {

// The events of zwlr_screencopy_frame_v1, in their order.
struct FrameListener
{
    using Buffer = void (*)(void*, wl_proxy*, uint32_t, uint32_t, uint32_t, uint32_t);
    Buffer buffer;
    void (*flags)(void*, wl_proxy*, uint32_t);
    void (*ready)(void*, wl_proxy*, uint32_t, uint32_t, uint32_t);
    void (*failed)(void*, wl_proxy*);
    Buffer damage;
    void (*graphicsBuffer)(void*, wl_proxy*, uint32_t, uint32_t, uint32_t);
    void (*bufferDone)(void*, wl_proxy*);
};

const FrameListener* g_real = nullptr;
FrameListener g_listener;

// wl_shm numbers these two formats differently from graphics cards.
uint32_t GraphicsFormat(uint32_t format)
{
    constexpr uint32_t argb = 0x34325241;
    constexpr uint32_t xrgb = 0x34325258;
    return format == 0 ? argb : format == 1 ? xrgb : format;
}

void OnBuffer(void* data, wl_proxy* frame, uint32_t format, uint32_t width, uint32_t height,
              uint32_t stride)
{
    g_real->buffer(data, frame, format, width, height, stride);
    g_real->graphicsBuffer(data, frame, GraphicsFormat(format), width, height);
}

template <typename Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int wl_proxy_add_listener(wl_proxy* proxy, void (**listener)(), void* data)
{
    if (std::strcmp(Real<const char*(wl_proxy*)>("wl_proxy_get_class")(proxy),
                    "zwlr_screencopy_frame_v1") == 0) {
        g_real = reinterpret_cast<const FrameListener*>(listener);
        g_listener = *g_real;
        g_listener.buffer = OnBuffer;
        listener = reinterpret_cast<void (**)()>(&g_listener);
    }
    return Real<int(wl_proxy*, void (**)(), void*)>("wl_proxy_add_listener")(proxy, listener, data);
}
