// Keeps the screen from going dark in front of a recording that nobody touches.
#pragma once

namespace tool {

// From now until this process ends, however it ends, the desktop does not blank or lock the screen
// for want of input. Asks nobody, waits for nothing, and does nothing on a desktop that offers no
// way to do this. Call it once.
void KeepAwake();

} // namespace tool
