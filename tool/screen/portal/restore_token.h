// What makes the desktop's question come only once: for each screen a token, with which the next
// recording gets the same permission without a dialog. A token is good for one recording, which
// gets a new one.
#pragma once

#include "tool/screen/rectangle.h"

#include <string>

namespace tool {

// Whether it looks like one: a UUID. Portals refuse anything else with an error.
bool IsRestoreToken(const std::string& text);

// The token stored for this screen, or an empty string. Whatever is in its place is no error.
std::string RecallToken(const Rectangle& screen);

// Replaces the token of this screen; anything but a token removes it. Failures are ignored: the
// desktop then asks again.
void StoreToken(const Rectangle& screen, const std::string& token);

} // namespace tool
