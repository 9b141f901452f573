#pragma once

#include <ctime>
#include <sys/stat.h>

namespace tool {

// When the content of the file was last changed, to the nanosecond. The field has another name on
// each system.
timespec LastChange(const struct stat& file);

} // namespace tool
