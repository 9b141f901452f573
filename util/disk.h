#pragma once

// The state of an open file.
struct STRUCT_RSB_FILE_ATTR
{
    unsigned long long size; // bytes
    unsigned int mode;       // type and permission bits, as stat gives them
    long long accessTime;    // seconds since 1970-01-01 UTC, as the next two
    long long modificationTime;
    long long statusChangeTime;
};

// The bytes an unprivileged user may still write under `path`, in two halves. Where the path does
// not exist, its nearest existing parent counts: the buffer of the path is cut in place, down to
// the place that answered. The second argument is ignored. 0, also for a path that is not absolute
// (both halves are then 0); -1 when not even "/" answers.
int rsb_getFreeSpace(char* path, int ignored, unsigned int* high, unsigned int* low);

// 0, or -1 for a descriptor that is not open.
int rsb_statH(int fd, STRUCT_RSB_FILE_ATTR* attr);

// The size in bytes in two halves. 0, or -1 for a descriptor that is not open.
int rsb_getFileSizeH(int fd, int* low, int* high);

// The size in bytes of a file that can be read. 0, or errno (EILSEQ for a path that has no 8-bit
// form).
int GetFileByteSize(const wchar_t* path, unsigned long long& size);
