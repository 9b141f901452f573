#pragma once

#include "tool/system/descriptor.h"

#include <cstddef>
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

// Asks for this capacity in bytes, so that it is written in fewer, larger pieces and a slow reader
// holds nobody up. Returns the capacity that it has.
size_t SetCapacity(const Descriptor& pipe, size_t bytes);

} // namespace tool
