#include "tool/system/environment.h"

#include <cstdlib>

namespace tool {

std::string Variable(const char* name)
{
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): one thread only
    return value == nullptr ? std::string() : value;
}

} // namespace tool
