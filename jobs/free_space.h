#pragma once

#include <QString>

/// A recording stops when its volume has fewer free bytes than this (10 MiB).
constexpr quint64 kLeastFreeBytes = 10485760;

/// Whether a recording must stop with `freeBytes` left on its volume. Exactly kLeastFreeBytes is
/// enough to go on.
constexpr bool IsTooLittleSpace(quint64 freeBytes)
{
    return freeBytes < kLeastFreeBytes;
}

/// Free bytes of the volume of `directory`, or of its nearest existing parent. 0 if the path is
/// relative or the volume cannot be queried. The path is converted to Latin-1, so everything below
/// the first name with other characters counts as missing.
quint64 FreeBytes(const QString& directory);

/// The file's size in bytes, 0 if there is none.
qint64 FileBytes(const QString& path);
