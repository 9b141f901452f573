#include "tool/screen/wayland/outputs.h"

#include "tool/screen/frame_fitter.h"
#include "tool/screen/wayland/wayland_client.h"

#include <algorithm>
#include <string_view>
#include <tuple>

namespace tool {
namespace {

constexpr size_t mostOutputs = 64;

Output& Of(void* data)
{
    return *static_cast<Output*>(data);
}

// Places from here count for a compositor without xdg-output.
const wl_output_listener outputEvents{
    [](void* data, wl_output* /*output*/, int32_t x, int32_t y, int32_t /*width*/,
       int32_t /*height*/, int32_t /*subpixel*/, const char* /*make*/, const char* /*model*/,
       int32_t transform) {
        Output& output = Of(data);
        if (!output.place) {
            output.x = x;
            output.y = y;
        }
        constexpr int transforms = 8;
        output.transform = transform >= 0 && transform < transforms ? transform : 0;
    },
    [](void* data, wl_output* /*output*/, uint32_t flags, int32_t width, int32_t height,
       int32_t refresh) {
        if ((flags & WL_OUTPUT_MODE_CURRENT) != 0) {
            Of(data).width = width;
            Of(data).height = height;
            Of(data).refresh = refresh;
        }
    },
    [](void* /*data*/, wl_output* /*output*/) {},
    [](void* /*data*/, wl_output* /*output*/, int32_t /*factor*/) {},
    [](void* /*data*/, wl_output* /*output*/, const char* /*name*/) {},
    [](void* /*data*/, wl_output* /*output*/, const char* /*description*/) {},
};

const zxdg_output_v1_listener placeEvents{
    [](void* data, zxdg_output_v1* /*place*/, int32_t x, int32_t y) {
        Of(data).x = x;
        Of(data).y = y;
    },
    [](void* /*data*/, zxdg_output_v1* /*place*/, int32_t /*width*/, int32_t /*height*/) {},
    [](void* /*data*/, zxdg_output_v1* /*place*/) {},
    [](void* /*data*/, zxdg_output_v1* /*place*/, const char* /*name*/) {},
    [](void* /*data*/, zxdg_output_v1* /*place*/, const char* /*description*/) {},
};

} // namespace

struct RegistryEvents
{
    static constexpr wl_registry_listener events{
        [](void* data, wl_registry* /*registry*/, uint32_t id, const char* interface,
           uint32_t version) { static_cast<Outputs*>(data)->Add(id, interface, version); },
        [](void* data, wl_registry* /*registry*/, uint32_t id) {
            static_cast<Outputs*>(data)->Remove(id);
        },
    };
};

Rectangle Output::Area() const
{
    const Rectangle size = UprightSize(width, height, transform);
    return {x, y, size.width, size.height};
}

Outputs::Outputs(Connection& connection)
    : m_connection(connection),
      m_registry(wl_display_get_registry(connection.Display()))
{
    if (m_registry) {
        wl_registry_add_listener(m_registry.get(), &RegistryEvents::events, this);
    }
}

Outputs::~Outputs() = default;

bool Outputs::Read(SteadyTime until)
{
    // The first answer brings the list of what there is, the second the outputs' properties.
    return m_registry && m_connection.Synchronise(until) && m_connection.Synchronise(until);
}

std::vector<const Output*> Outputs::Sorted() const
{
    std::vector<const Output*> sorted;
    for (const auto& output : m_outputs) {
        const auto [least, most] = std::minmax(output->width, output->height);
        if (!output->isGone && least >= 2 && most <= largestSide) {
            sorted.push_back(output.get());
        }
    }
    std::stable_sort(sorted.begin(), sorted.end(), [](const Output* one, const Output* other) {
        return std::tie(one->x, one->y) < std::tie(other->x, other->y);
    });
    return sorted;
}

template <typename Object>
void Outputs::Bind(Proxy<Object>& object, uint32_t id, const wl_interface& interface,
                   uint32_t version)
{
    if (!object) {
        object.reset(
            static_cast<Object*>(wl_registry_bind(m_registry.get(), id, &interface, version)));
    }
}

void Outputs::Add(uint32_t id, const char* interface, uint32_t version)
{
    const std::string_view name = interface;
    if (name == wl_shm_interface.name) {
        Bind(m_sharedMemory, id, wl_shm_interface, 1);
    } else if (name == zwlr_screencopy_manager_v1_interface.name) {
        constexpr uint32_t known = 3;
        Bind(m_screencopy, id, zwlr_screencopy_manager_v1_interface, std::min(version, known));
    } else if (name == zxdg_output_manager_v1_interface.name) {
        constexpr uint32_t known = 3;
        Bind(m_places, id, zxdg_output_manager_v1_interface, std::min(version, known));
    } else if (name == wl_output_interface.name && m_outputs.size() < mostOutputs) {
        constexpr uint32_t known = 4;
        auto output = std::make_unique<Output>();
        output->id = id;
        Bind(output->output, id, wl_output_interface, std::min(version, known));
        if (output->output) {
            wl_output_add_listener(output->output.get(), &outputEvents, output.get());
            m_outputs.push_back(std::move(output));
        }
    }
    AskForPlaces();
}

// The manager may be told of before or after the outputs.
void Outputs::AskForPlaces()
{
    for (const auto& output : m_outputs) {
        if (m_places && !output->place) {
            output->place.reset(
                zxdg_output_manager_v1_get_xdg_output(m_places.get(), output->output.get()));
            if (output->place) {
                zxdg_output_v1_add_listener(output->place.get(), &placeEvents, output.get());
            }
        }
    }
}

void Outputs::Remove(uint32_t id)
{
    for (const auto& output : m_outputs) {
        output->isGone = output->isGone || output->id == id;
    }
}

} // namespace tool
