#pragma once

#include "tool/system/descriptor.h"
#include "tool/system/steady_time.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>

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

// Reads until the end of the pipe, and appends to the text. Returns false if there is more than 1
// MiB, no end until then, or `goesOn`, which is asked 20 times a second, says so.
bool ReadAll(const Descriptor& pipe, std::string& text, SteadyTime until,
             const std::function<bool()>& goesOn = {});

// The bytes in the pipe, or nothing if nobody can read them any more. For the end that is written
// to.
std::optional<size_t> UnreadBytes(const Descriptor& pipe);

// Like write(), but without copying where the system can do that: the memory must not change before
// it has been read.
ssize_t WriteLasting(const Descriptor& pipe, const void* bytes, size_t size);

} // namespace tool
