// What the desktop tells the user when no window can.
#pragma once

#include <string>

namespace tool {

// Shows a notification: the summary as plain text, the body as what the desktop makes of it.
// Returns when it is shown, or after 5 s at most. Without a desktop that shows any, nothing
// happens.
void Notify(const std::string& summary, const std::string& body);

} // namespace tool
