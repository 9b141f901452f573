// Remembers which source had which number in the last list. Devices come and go between the list
// and the recording, but a number must still mean the device the user chose.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool {

// Formats the names for the file, or for another process: the server's address on the first line,
// then one source name per line.
std::string RememberedText(const std::string& server, const std::vector<std::string>& sources);

// Parses such a text. Returns nothing if it is from another server or malformed.
std::optional<std::vector<std::string>> ParseRemembered(const std::string& text,
                                                        const std::string& server);

// Stores the names for the program that asked for the list (the parent process), and for any other
// one. Failures are ignored: the recording then asks the server again.
void RememberDevices(const std::vector<std::string>& sources);

// The names in the last list the parent process asked for, else in the last list of any process.
std::optional<std::vector<std::string>> RecallDevices();

} // namespace tool
