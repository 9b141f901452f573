// Grabs a part of the X screen, with the mouse cursor.
#pragma once

#include "tool/screen/rectangle.h"
#include "tool/screen/x11/screen_picture.h"
#include "tool/system/steady_time.h"

#include <memory>
#include <string>

namespace tool {

class ScreenGrabber
{
public:
    enum class Outcome {
        Taken,
        Waiting, // the server has not answered yet; the next call goes on waiting
        Lost,    // the server is gone or refuses
    };

    // Returns nothing if this does not work: no display, no XFixes, or pixels other than four bytes
    // with 8 or 10 bits per colour and blue in the lowest bits.
    static std::unique_ptr<ScreenGrabber> Open(const std::string& display, Rectangle area);

    ScreenGrabber(const ScreenGrabber&) = delete;
    ScreenGrabber& operator=(const ScreenGrabber&) = delete;
    ~ScreenGrabber();

    // Grabs one image, waiting until then at most.
    Outcome Grab(SteadyTime until);

    // The last image. Smaller than the area if the screen has shrunk.
    Pixels Picture() const;

private:
    struct Private;
    explicit ScreenGrabber(std::unique_ptr<Private> members);
    std::unique_ptr<Private> m_p;
};

} // namespace tool
