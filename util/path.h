#pragma once

// A path that does not exist yet, from one that may: `in` itself when it is free, else numbered
// before the extension, "name (1).mp4", "name (2).mp4" and on. A link that leads nowhere is not
// free. `out` is always terminated within `size` characters; it is empty when no free name fits or
// can be looked up.
void GetRealFileName(const wchar_t* in, wchar_t* out, int size);

// Copies what follows the last "." of `name` into `ext`, which has to hold it. 0, or 87 when a
// pointer is null or there is no ".".
int GetExtendName(const char* name, char* ext);

// The parts of a path, each into a buffer that has to hold it; no buffer may be null. The drive is
// always empty, the directory ends in "/", the extension begins with ".". All are empty for null.
void _splitpath(const char* path, char* drive, char* dir, char* fname, char* ext);

// Counts the "/" and backslashes of a path, one at its end left out. Always 0.
int GetPathDirIndex(const wchar_t* path, int& count);

// Cuts the blanks (" ") off that stand before position `length`.
void EraseStringTailBlankChar(char* s, int length);

// Turn the letters A to Z of a text into lower case; all other bytes stay.
void Convert2Lowercase(char* s);
void GetCharLowerA(char* s);
