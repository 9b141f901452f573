#pragma once

#include <string>

// "hh:mm:ss" of a count of seconds; more than 99 hours take more digits ("100:00:00"). A negative
// count stands as it is in the last place ("00:00:-5").
std::string GetTimeStringA(long long seconds);

// The same as wide text.
std::wstring GetTimeString(long long seconds);

// A size in the largest of Bytes, KB, MB, GB and TB (1024 of one make the next) that it reaches,
// with two decimals from KB on: "1.50 KB". Under 1024, negative sizes too, it is taken as a 32-bit
// integer.
std::string GetFileSizeString(long long bytes);

// Writes at most 4096 wide characters, the end included, so `buffer` has to hold as many. The count
// of characters written, negative when they do not fit.
int rsb_wsprintf(wchar_t* buffer, const wchar_t* format, ...);
