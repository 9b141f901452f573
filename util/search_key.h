#pragma once

#include <string>

// Whether a character is special in a regular expression but not in a search text: one of
// .^$+?{}[] .
bool IsBoostSearchKeyLetter(wchar_t c);

// Converts a search text to a regular expression, with a backslash before every such character.
std::wstring ReplaceSearchKey(const wchar_t* pattern);

// Whether a disk record of `size` bytes starts with "FILE".
bool IsNtfsFileRecord(const unsigned char* record, int size);
