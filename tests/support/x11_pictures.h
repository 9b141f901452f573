// Pictures of a virtual X screen.
#pragma once

#include "tests/support/own_screen.h"
#include "tool/screen/screen_picture.h"
#include "tool/screen/x11/x11_screen.h"

#include <QRect>
#include <QStringList>

#include <chrono>
#include <memory>
#include <vector>

using namespace std::chrono_literals;
using Outcome = tool::Screen::Outcome;

inline constexpr tool::Rectangle kArea{0, 0, 320, 200};
inline constexpr auto kSize = "320x200x24";
inline const QStringList kUsual{"-screen", "0", kSize};
inline constexpr uint8_t kWhite = 235; // as luma
inline constexpr uint8_t kBlack = 16;

// Takes pictures like a recording.
class X11Pictures
{
public:
    explicit X11Pictures(const OwnScreen& screen, const tool::Rectangle& area = kArea)
        : m_screen(tool::OpenX11Screen(screen.Name().toStdString(), area)),
          m_area(area),
          m_frame(tool::YuvBytes(area.width, area.height))
    {
    }

    bool IsOpen() const { return m_screen != nullptr; }
    Outcome Next(std::chrono::milliseconds patience = 5s)
    {
        const Outcome outcome = m_screen->Next(std::chrono::steady_clock::now() + patience);
        if (outcome == Outcome::Taken) {
            m_screen->Write(m_frame.data());
        }
        return outcome;
    }
    // The first look that is not a waiting one, of a few.
    Outcome NextAnswer()
    {
        Outcome outcome = Next();
        for (int looks = 0; outcome == Outcome::Waiting && looks < 5; ++looks) {
            outcome = Next();
        }
        return outcome;
    }
    // Whether nothing changes any more, after a few pictures: the server may report the beginning.
    bool BecomesStill()
    {
        int looks = 0;
        while (looks < 100 && Next() != Outcome::Unchanged) {
            ++looks;
        }
        return looks < 100;
    }
    // The brightness in the last picture.
    int At(int x, int y) const
    {
        return m_frame[static_cast<size_t>(y) * static_cast<size_t>(m_area.width) +
                       static_cast<size_t>(x)];
    }
    // What is bright in it.
    QRect Bright() const
    {
        QRect all;
        for (int y = 0; y < m_area.height; ++y) {
            for (int x = 0; x < m_area.width; ++x) {
                all = At(x, y) > 100 ? all.united({x, y, 1, 1}) : all;
            }
        }
        return all;
    }

private:
    std::unique_ptr<tool::Screen> m_screen;
    tool::Rectangle m_area;
    std::vector<uint8_t> m_frame;
};

// The screen in one colour, 0xRRGGBB, with the mouse there.
inline X11Pictures PicturesOf(OwnScreen& screen, uint32_t colour, int mouseX, int mouseY)
{
    if (screen.Good()) {
        screen.ShowColour(colour, mouseX, mouseY);
    }
    return X11Pictures(screen);
}
