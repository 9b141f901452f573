#pragma once

// The state of an open file.
struct STRUCT_RSB_FILE_ATTR
{
    unsigned long long size; // bytes
    unsigned int mode;       // type and permission bits, as stat gives them
    long long accessTime;    // all times in seconds since 1970-01-01 UTC
    long long modificationTime;
    long long statusChangeTime;
};

// Stores the bytes an unprivileged user can still write under `path`, in two halves. If the path
// does not exist, uses its nearest existing parent and truncates the buffer in place to that. The
// second argument is ignored. Returns 0, also for a relative path (with both halves 0), or -1 if
// even "/" cannot be queried.
int rsb_getFreeSpace(char* path, int ignored, unsigned int* high, unsigned int* low);

// Returns 0, or -1 if the descriptor is not open.
int rsb_statH(int fd, STRUCT_RSB_FILE_ATTR* attr);

// Stores the size in bytes, in two halves. Returns 0, or -1 if the descriptor is not open.
int rsb_getFileSizeH(int fd, int* low, int* high);

// Stores the size in bytes of a readable file. Returns 0 or an errno value (EILSEQ if the path
// cannot be converted to 8-bit text).
int GetFileByteSize(const wchar_t* path, unsigned long long& size);
