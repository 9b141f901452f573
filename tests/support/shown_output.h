// What an output of the Wayland session shows, without a recording.
#pragma once

#include "tests/support/run_program.h"
#include "tool/screen/screen_picture.h"
#include "tool/screen/wayland/wayland_screens.h"

#include <QList>
#include <QStringList>
#include <QTest>

#include <chrono>
#include <vector>

// Has sway do this, as swaymsg understands it. Returns false if it does not.
inline bool TellSway(const QStringList& command)
{
    return RunProgram("swaymsg", QStringList{"--quiet"} + command).code == 0;
}

// The outputs' places and sizes, from left to right.
inline std::vector<tool::Rectangle> OutputAreas()
{
    return tool::ReadWaylandScreens(qEnvironmentVariable("WAYLAND_DISPLAY").toStdString()).areas;
}

// The brightness (16 to 235) in the middle of each quarter of that output: upper left, upper right,
// lower left, lower right. Empty if there is no picture.
inline QList<int> ShownLumas(size_t output)
{
    const auto areas = OutputAreas();
    if (output >= areas.size()) {
        return {};
    }
    const auto opened = tool::OpenWaylandScreen(
        qEnvironmentVariable("WAYLAND_DISPLAY").toStdString(), areas[output]);
    constexpr std::chrono::seconds patience{2};
    if (!opened || !opened->screen ||
        opened->screen->Next(std::chrono::steady_clock::now() + patience) !=
            tool::Screen::Outcome::Taken) {
        return {};
    }
    const auto width = static_cast<size_t>(opened->area.width);
    const auto height = static_cast<size_t>(opened->area.height);
    std::vector<uint8_t> frame(tool::YuvBytes(opened->area.width, opened->area.height));
    opened->screen->Write(frame.data());
    const auto luma = [&](size_t x, size_t y) {
        return static_cast<int>(frame[y * height / 4 * width + x * width / 4]);
    };
    return {luma(1, 1), luma(3, 1), luma(1, 3), luma(3, 3)};
}
