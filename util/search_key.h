#pragma once

#include <string>

// Whether a character means something in a regular expression that it does not in a search text:
// one of .^$+?{}[] .
bool IsBoostSearchKeyLetter(wchar_t c);

// A search text as a regular expression: a backslash before every such character.
std::wstring ReplaceSearchKey(const wchar_t* pattern);

// Whether a disk record of `size` bytes begins with "FILE".
bool IsNtfsFileRecord(const unsigned char* record, int size);
