// The frames of small recordings, pixel by pixel.
#pragma once

#include "tests/support/run_program.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <cstdlib>

inline constexpr auto kSize = "640x480x24";
inline constexpr int kWidth = 640;
inline constexpr int kHeight = 480;
inline constexpr uint32_t kGround = 0x4080c0;

// All frames, three bytes per pixel.
inline QByteArray Decoded(const QString& file)
{
    return RunProgram("ffmpeg",
                      {"-v", "error", "-i", file, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"})
        .output;
}

inline QByteArray LastPicture(const QString& file)
{
    return Decoded(file).right(qsizetype{3} * kWidth * kHeight);
}

inline bool IsColour(const QByteArray& picture, qsizetype pixel, uint32_t colour)
{
    for (int channel = 0; channel < 3; ++channel) {
        const int shown = static_cast<uint8_t>(picture[pixel * 3 + channel]);
        const int meant = static_cast<int>(colour >> (16 - 8 * channel) & 0xff);
        if (std::abs(shown - meant) > 8) {
            return false;
        }
    }
    return true;
}

inline bool IsColour(const QByteArray& picture, int x, int y, uint32_t colour)
{
    return IsColour(picture, qsizetype{y} * kWidth + x, colour);
}
