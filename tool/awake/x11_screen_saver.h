#pragma once

namespace tool {

// Holds off the X server's own screen saver and power saving, what listens to these, what measures
// how long nobody has touched anything, and xscreensaver.
void HoldX11ScreenSaver();

} // namespace tool
