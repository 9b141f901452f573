// From the arguments the recorder writes (the capture interface of macOS) to those of the stock
// ffmpeg on X11. Values in, values out: nothing here looks at the machine.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool {

using Arguments = std::vector<std::string>;

// A part of the X screen, in pixels.
struct Rectangle
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(const Rectangle&) const = default;
};

enum class RequestKind { PassThrough, ListDevices, Capture, Malformed };

// What the arguments ask for. `audio` holds the device indices in the order of the inputs.
struct Request
{
    RequestKind kind = RequestKind::PassThrough;
    int screen = 0;
    std::vector<int> audio;
    std::string error; // one sentence, for Malformed only
};

// What the pipe of the pictures begins with. It means nothing; that it is read tells that ffmpeg
// has opened the pipe.
constexpr int skippedBytes = 64;

// What the capture reads from.
struct CapturePlan
{
    std::string display;           // as in DISPLAY
    Rectangle area;                // even width and height
    std::optional<int> soundPipe;  // file descriptor that gives s16le stereo; none: no sound
    bool knowsStatsPeriod = false; // whether this ffmpeg has -stats_period (4.4 and later)
    // Gives `skippedBytes`, then yuv420p pictures; none: ffmpeg grabs the screen itself.
    std::optional<int> screenPipe = std::nullopt;
};

// Tells which of the four kinds of command this is.
Request ReadRequest(const Arguments& arguments);

// Samples a second that the sound is to be read with: the output's -ar, else 48000.
int SampleRate(const Arguments& arguments);

// Pictures a second of a capture: the output's -r, else the capture's -framerate, else "30".
std::string FrameRate(const Arguments& arguments);

// Whether the output's pictures are to be yuv420p: only then may they come as such.
bool WantsYuv420(const Arguments& arguments);

// The same command without the options that current ffmpegs refuse; all else untouched, in order.
Arguments TranslatePassThrough(const Arguments& arguments);

// Whether the capture command records an MP4 in pieces, so that it can be played whatever ends it:
// one of that name with nothing said about how it is to be written.
bool RecordsInPieces(const Arguments& arguments);

// The capture command for the stock ffmpeg. The screen comes first, the sound after it.
Arguments TranslateCapture(const Arguments& arguments, const CapturePlan& plan);

// The rectangle without its last column or row where the width or height is odd: the H.264 colour
// format that every player knows has no odd sizes.
Rectangle EvenSized(Rectangle area);

} // namespace tool
