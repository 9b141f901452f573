#pragma once

namespace tool {

// For a child process, between fork and exec: keeps all descriptors but the standard streams from
// the program that it becomes.
void InheritStandardStreamsOnly();

} // namespace tool
