#pragma once

namespace tool {

// Waits until what was written to the file, and its size, are on the disk. Returns false, with
// errno, if they cannot be.
bool SyncData(int descriptor);

} // namespace tool
