#include "tool/screen/wayland/wayland_screens.h"

#include "tool/screen/wayland/screencopy_screen.h"
#include "tool/screen/wayland/wayland_library.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace tool {
namespace {

// For a compositor's answers. Measured: 1 ms, or an interval of its monitors when it is busy.
constexpr std::chrono::seconds patience{1};

struct Opened
{
    std::unique_ptr<Connection> connection;
    std::unique_ptr<Outputs> outputs;
    std::string reason; // if there are none
};

Opened Open(const std::string& name)
{
    const SteadyTime until = std::chrono::steady_clock::now() + patience;
    const std::string none = "No screen can be recorded: ";
    if (Wayland() == nullptr) {
        return {nullptr, nullptr,
                none + "this is a Wayland session, and libwayland-client is missing or too old"};
    }
    Opened opened;
    opened.connection = Connection::Open(name, until);
    if (!opened.connection) {
        opened.reason = none + "the Wayland display " + name + " cannot be opened";
        return opened;
    }
    opened.outputs = std::make_unique<Outputs>(*opened.connection);
    if (!opened.outputs->Read(until)) {
        opened.reason = none + "the Wayland display " + name + " does not answer";
    } else if (opened.outputs->Sorted().empty()) {
        opened.reason = none + "the Wayland display " + name + " has none";
    }
    return opened;
}

} // namespace

Screens ReadWaylandScreens(const std::string& name)
{
    const Opened opened = Open(name);
    Screens screens{{}, opened.reason};
    if (opened.reason.empty()) {
        for (const Output* output : opened.outputs->Sorted()) {
            screens.areas.push_back(output->Area());
        }
    }
    return screens;
}

std::optional<OpenedScreen> OpenWaylandScreen(const std::string& name, const Rectangle& area)
{
    Opened opened = Open(name);
    if (!opened.reason.empty()) {
        return OpenedScreen{nullptr, area, opened.reason};
    }
    if (opened.outputs->Screencopy() == nullptr || opened.outputs->SharedMemory() == nullptr) {
        return std::nullopt;
    }
    const auto outputs = opened.outputs->Sorted();
    const auto output = std::find_if(outputs.begin(), outputs.end(),
                                     [&](const Output* one) { return one->Area() == area; });
    if (output == outputs.end()) {
        return OpenedScreen{nullptr, area, "the screen has just been changed"};
    }
    const Rectangle even = EvenSized(area);
    return OpenedScreen{
        OpenScreencopy(std::move(opened.connection), std::move(opened.outputs), **output, even),
        even,
        {}};
}

} // namespace tool
