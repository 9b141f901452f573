// Pictures of a fake compositor, through the screen that a recording uses.
#pragma once

#include "tests/support/fake_compositor.h"
#include "tool/screen/screen_picture.h"
#include "tool/screen/wayland/wayland_screens.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <vector>

constexpr tool::Rectangle kFakeArea{0, 0, 64, 48};
constexpr int kWhite = 235; // as luma
constexpr int kBlack = 16;
constexpr uint32_t kWhitePixel = 0xffffffff;

// A screen, and the last frame of it.
class FakePictures
{
public:
    explicit FakePictures(const RunningCompositor& compositor,
                          const tool::Rectangle& area = kFakeArea)
        : m_opened(tool::OpenWaylandScreen(compositor.Name(), area)),
          m_frame(tool::YuvBytes(area.width, area.height) + kBehind, kUntouched),
          m_area(area)
    {
    }

    bool IsOpen() const { return m_opened && m_opened->screen; }
    const std::optional<tool::OpenedScreen>& Opened() const { return m_opened; }
    tool::Screen::Outcome Next(std::chrono::milliseconds patience = std::chrono::seconds(5))
    {
        const auto outcome = m_opened->screen->Next(std::chrono::steady_clock::now() + patience);
        if (outcome == tool::Screen::Outcome::Taken) {
            Write();
        }
        return outcome;
    }
    void Write() { m_opened->screen->Write(m_frame.data()); }
    std::string LostReason() const { return m_opened->screen->LostReason(); }
    int At(int x, int y) const
    {
        return m_frame[static_cast<size_t>(y) * static_cast<size_t>(m_area.width) +
                       static_cast<size_t>(x)];
    }
    bool KeepsItsBounds() const
    {
        return std::all_of(m_frame.end() - kBehind, m_frame.end(),
                           [](uint8_t byte) { return byte == kUntouched; });
    }

private:
    static constexpr int kBehind = 64;
    static constexpr uint8_t kUntouched = 0x5a;
    std::optional<tool::OpenedScreen> m_opened;
    std::vector<uint8_t> m_frame;
    tool::Rectangle m_area;
};

// White pictures, answered like this.
inline FakeCompositor With(const std::vector<FakeCompositor::Answer>& answers)
{
    FakeCompositor behaviour;
    behaviour.answers = answers;
    behaviour.pixel = kWhitePixel;
    return behaviour;
}
