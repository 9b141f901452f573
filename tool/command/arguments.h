// Translates the recorder's arguments (the macOS capture interface) to those of the stock ffmpeg on
// X11. Pure functions: nothing here looks at the machine.
#pragma once

#include "tool/screen/rectangle.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

using Arguments = std::vector<std::string>;

enum class RequestKind { PassThrough, ListDevices, Capture, Malformed };

// What the arguments ask for. `audio` has the device indices in the order of the inputs.
struct Request
{
    RequestKind kind = RequestKind::PassThrough;
    int screen = 0;
    std::vector<int> audio;
    std::string error; // one sentence, for Malformed only
};

// The number of meaningless bytes at the start of the picture pipe. When they are read, ffmpeg has
// opened the pipe.
constexpr int skippedBytes = 64;

// The inputs of a capture.
struct CapturePlan
{
    std::string display;           // as in DISPLAY
    Rectangle area;                // even width and height
    std::optional<int> soundPipe;  // file descriptor with s16le stereo; none: no sound
    bool knowsStatsPeriod = false; // whether this ffmpeg has -stats_period (4.4 and later)
    // File descriptor with `skippedBytes`, then yuv420p frames; none: ffmpeg grabs the screen
    // itself.
    std::optional<int> screenPipe = std::nullopt;
};

// Determines which of the four kinds of command this is.
Request ReadRequest(const Arguments& arguments);

// The sample rate to read the sound with: the output's -ar, else 48000.
int SampleRate(const Arguments& arguments);

// The frame rate of a capture: the output's -r, else the capture's -framerate, else "30".
std::string FrameRate(const Arguments& arguments);

// Whether the output is yuv420p. Only then can the frames be delivered in that format.
bool WantsYuv420(const Arguments& arguments);

// The same command with the options renamed or removed that current ffmpegs refuse.
Arguments TranslatePassThrough(const Arguments& arguments);

// Whether the capture writes a fragmented MP4, which plays even if it is interrupted: the output is
// named .mp4, and no option says how to write it.
bool RecordsInPieces(const Arguments& arguments);

// The capture command for the stock ffmpeg, with the screen as the first input and the sound
// second.
Arguments TranslateCapture(const Arguments& arguments, const CapturePlan& plan);

} // namespace tool
