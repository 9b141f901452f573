#pragma once

#include <string>

// Formats seconds as "hh:mm:ss", with more digits from 100 hours on ("100:00:00"). A negative count
// is printed as is in the last field ("00:00:-5").
std::string GetTimeStringA(long long seconds);

// The same as a wide string.
std::wstring GetTimeString(long long seconds);

// Formats a size in Bytes, KB, MB, GB or TB, whichever is the largest unit it reaches (factor
// 1024), with two decimals from KB on: "1.50 KB". Sizes below 1024, negative ones too, are printed
// as a 32-bit integer.
std::string GetFileSizeString(long long bytes);

// Writes up to 4096 wide characters including the terminator; `buffer` must have room for them.
// Returns the number of characters written, or a negative value if they do not fit.
int rsb_wsprintf(wchar_t* buffer, const wchar_t* format, ...);
