#pragma once

// Finds a path that does not exist: `in` itself, else `in` with a number before the extension,
// "name (1).mp4", "name (2).mp4" and so on. A dangling symbolic link counts as existing. `out` is
// always terminated within `size` characters; it is empty if no free name fits or can be looked up.
void GetRealFileName(const wchar_t* in, wchar_t* out, int size);

// Copies what follows the last "." of `name` to `ext`, which must have room for it. Returns 0, or
// 87 if a pointer is null or there is no ".".
int GetExtendName(const char* name, char* ext);

// Splits a path. Each buffer must have room for its part, and none may be null. The drive is always
// empty, the directory ends with "/", the extension starts with ".". All are empty for a null path.
void _splitpath(const char* path, char* drive, char* dir, char* fname, char* ext);

// Counts the slashes and backslashes of a path, except one at its end. Always returns 0.
int GetPathDirIndex(const wchar_t* path, int& count);

// Removes the trailing blanks (" ") of the first `length` characters.
void EraseStringTailBlankChar(char* s, int length);

// Both convert A to Z to lower case in place and leave all other bytes alone.
void Convert2Lowercase(char* s);
void GetCharLowerA(char* s);
