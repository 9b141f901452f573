#pragma once

// What system headers of macOS declare and those of Linux do not. fcntl() refuses the two requests,
// as file systems other than Apple's do.

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#define F_BARRIERFSYNC 85
#define F_FULLFSYNC 51
#define st_mtimespec st_mtim

// macOS has a limit of its own; in some containers there are a billion.
inline int BoundedTableSize()
{
    return std::min(getdtablesize(), 65536);
}
#define getdtablesize BoundedTableSize

constexpr unsigned RENAME_EXCL = RENAME_NOREPLACE;

inline int renameatx_np(int fromFolder, const char* from, int toFolder, const char* to,
                        unsigned flags)
{
    return renameat2(fromFolder, from, toFolder, to, flags);
}
