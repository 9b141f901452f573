#pragma once

namespace tool {

// Asks the services of the session bus that watch for idleness, also those that start or restart
// later.
void HoldSessionServices();

} // namespace tool
