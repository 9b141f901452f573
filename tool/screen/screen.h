// What a recording needs of the screen, on any platform.
#pragma once

#include "tool/screen/rectangle.h"
#include "tool/system/steady_time.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <poll.h>
#include <string>
#include <vector>

namespace tool {

// A part of the screen that is being recorded. Destroying it ends that. Used by one thread at a
// time.
class Screen
{
public:
    enum class Outcome {
        Taken,     // a new picture
        Unchanged, // the last one still shows the screen
        Waiting,   // no answer yet; the next call goes on waiting
        Lost,      // the screen is gone or refuses
    };

    Screen() = default;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    virtual ~Screen() = default;

    // Looks at the screen now, waiting until then at most. The first picture is never Unchanged.
    virtual Outcome Next(SteadyTime until) = 0;

    // Writes the last picture as a yuv420p frame (YuvBytes() long) of the size of the area that was
    // opened, with the mouse pointer. Allowed after Taken and Unchanged.
    virtual void Write(uint8_t* frame) = 0;

    // Why there was no first picture, or why the screen is lost: a sentence without its full stop.
    // Empty if nothing is known, and ffmpeg may grab the screen itself if there was no picture.
    virtual std::string LostReason() const { return {}; }
};

// Each area is the place of a monitor on the desktop and the size of its pictures in pixels. It
// identifies the monitor from the list to the recording.
struct Screens
{
    std::vector<Rectangle> areas; // in an order that stays
    std::string noneReason;       // a sentence without its full stop, if there are none
};

// Waits until the descriptor is ready or it is that time. Returns false if the recording is to end
// meanwhile.
using WaitForScreen = std::function<bool(pollfd& descriptor, SteadyTime until)>;

struct OpenedScreen
{
    std::unique_ptr<Screen> screen;
    Rectangle area; // its width and height, both even, are those of the frames
    // Without a screen: a sentence without its full stop. Empty if ffmpeg may grab the screen
    // itself.
    std::string reason;
};

// Each platform defines these three functions.

// The screens of this session.
Screens ReadScreens();

// Opens one of them. Where a person is asked first, that takes as long as the person does; it gives
// up when `wait` returns false.
OpenedScreen OpenScreen(const Rectangle& area, const WaitForScreen& wait);

// Whether ffmpeg could grab the screens itself.
bool FfmpegCanGrab();

} // namespace tool
