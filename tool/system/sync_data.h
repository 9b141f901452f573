#pragma once

namespace tool {

// Makes what was written to the file until now, and its size, outlast a crash of the system, before
// anything that is written later. Returns false, with errno, if that cannot be done. On macOS the
// last seconds may still be in the disk's own memory, because waiting for it is slow there.
bool SyncData(int descriptor);

// The same, and waits until it is on the disk itself.
bool SyncToDisk(int descriptor);

} // namespace tool
