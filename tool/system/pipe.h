#pragma once

#include "tool/system/descriptor.h"

#include <optional>

namespace tool {

// Both ends block, and neither is inherited by programs that are started.
struct Pipe
{
    Descriptor read;
    Descriptor write;
};

// Returns nothing, with errno, if there can be no pipe.
std::optional<Pipe> MakePipe();

// From now on, reading from or writing to it never waits.
void MakeNonBlocking(const Descriptor& descriptor);

} // namespace tool
