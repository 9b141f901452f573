#pragma once

#include <optional>

// The bytes an unprivileged user can still write to the disk that holds this file or folder.
// Returns nothing if there is none of that name.
std::optional<unsigned long long> FreeBytesAt(const char* path);
