#pragma once

#include <QString>

/// A recording stops when its volume has less than this left, in bytes (10 MiB).
constexpr quint64 kLeastFreeBytes = 10485760;

/// Whether a recording must stop with `freeBytes` left on its volume; exactly the least is enough.
constexpr bool IsTooLittleSpace(quint64 freeBytes)
{
    return freeBytes < kLeastFreeBytes;
}

/// Free bytes of the volume that holds `directory`, or its nearest existing parent. 0 when the path
/// is not absolute or nothing can be told. The path goes through Latin-1, so what lies below the
/// first name with other letters counts as not existing.
quint64 FreeBytes(const QString& directory);
