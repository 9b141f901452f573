// The outputs of a compositor: monitors, and what stands in for them.
#pragma once

#include "tool/screen/rectangle.h"
#include "tool/screen/wayland/connection.h"

#include <cstdint>
#include <memory>
#include <vector>

struct wl_interface;
struct wl_output;
struct wl_registry;
struct wl_shm;
struct zwlr_screencopy_manager_v1;
struct zxdg_output_manager_v1;
struct zxdg_output_v1;

namespace tool {

// Kept up to date by the compositor's events.
struct Output
{
    uint32_t id = 0; // in the registry
    Proxy<wl_output> output;
    Proxy<zxdg_output_v1> place;
    int x = 0; // on the desktop, in its units
    int y = 0;
    int width = 0; // in pixels, not turned
    int height = 0;
    int refresh = 0; // mHz; 0: not known
    int transform = 0;
    bool isGone = false;

    // Its place and its size when it is upright.
    Rectangle Area() const;
};

// What a compositor offers. Uses the connection while it exists.
class Outputs
{
public:
    explicit Outputs(Connection& connection);
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;
    ~Outputs();

    // Waits until all outputs are known. Returns false if the compositor does not answer by then.
    bool Read(SteadyTime until);

    // The outputs that can be recorded, from left to right and top to bottom.
    std::vector<const Output*> Sorted() const;
    // Null if the compositor does not have it.
    zwlr_screencopy_manager_v1* Screencopy() const { return m_screencopy.get(); }
    wl_shm* SharedMemory() const { return m_sharedMemory.get(); }

private:
    void Add(uint32_t id, const char* interface, uint32_t version);
    void Remove(uint32_t id);
    void AskForPlaces();
    template <typename Object>
    void Bind(Proxy<Object>& object, uint32_t id, const wl_interface& interface, uint32_t version);
    friend struct RegistryEvents;

    Connection& m_connection;
    Proxy<wl_registry> m_registry;
    Proxy<wl_shm> m_sharedMemory;
    Proxy<zwlr_screencopy_manager_v1> m_screencopy;
    Proxy<zxdg_output_manager_v1> m_places;
    std::vector<std::unique_ptr<Output>> m_outputs;
};

} // namespace tool
