// What the last list said: which source stood under which number. Devices come and go between the
// list and the recording; the number must still mean the device that the person chose.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool {

// The text of the file, and of an answer between processes: the server's address on the first line,
// then one source name a line.
std::string RememberedText(const std::string& server, const std::vector<std::string>& sources);

// The source names of such a text; nothing when it is of another server or is no such text.
std::optional<std::vector<std::string>> ParseRemembered(const std::string& text,
                                                        const std::string& server);

// Keeps the names for the program that asked for the list (the parent process), and for any other.
// A failure is silent: the recording then asks the server afresh.
void RememberDevices(const std::vector<std::string>& sources);

// The names in the list that the parent process saw last, else in the last list of all.
std::optional<std::vector<std::string>> RecallDevices();

} // namespace tool
