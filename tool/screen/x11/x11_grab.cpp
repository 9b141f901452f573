#include "tool/screen/x11/x11_grab.h"

namespace tool {

std::vector<std::string> X11GrabInput(const std::string& display, const Rectangle& area,
                                      const std::string& rate)
{
    return {"-f",          "x11grab",
            "-framerate",  rate,
            "-video_size", std::to_string(area.width) + "x" + std::to_string(area.height),
            "-draw_mouse", "1",
            "-grab_x",     std::to_string(area.x),
            "-grab_y",     std::to_string(area.y),
            "-i",          display};
}

} // namespace tool
