// What a recording needs of the screen, on any platform.
#pragma once

#include "tool/screen/rectangle.h"
#include "tool/system/steady_time.h"

#include <cstdint>
#include <memory>
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
};

struct Screens
{
    std::vector<Rectangle> areas; // the primary one first
    std::string noneReason;       // a sentence without its full stop, if there are none
};

// The screens of this session. Each platform defines these two functions.
Screens ReadScreens();

// Returns nothing if the area cannot be recorded.
std::unique_ptr<Screen> OpenScreen(const Rectangle& area);

} // namespace tool
