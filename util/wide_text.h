#pragma once

#include <string>

// The name of the 8-bit encoding. Empty before inner_initUnicodeMap().
extern char g_language[256];

// Sets up the conversions below. Call it once, before other threads start. Returns 0, or -1 if
// iconv does not know the encoding; the conversions then fail.
int inner_initUnicodeMap(const char* encoding);

// Convert between wide strings and 8-bit text, for characters up to U+FFFF. Return 0, or -1 with an
// empty result if a character cannot be converted, the result and its terminator do not fit into
// `size` units, or the conversions are not set up.
int inner_uni2str(const wchar_t* wide, char* text, int size);
int inner_str2uni(const char* text, wchar_t* wide, int size);
int Unicode2Ansi(const wchar_t* wide, char* text, int size);
int Ansi2Unicode(const char* text, wchar_t* wide, int size);

// inner_uni2str() for the first `length` characters, which need no terminator.
int inner_uni2str2(const wchar_t* wide, int length, char* text, int size);

// The same without a size limit. Return an empty string on failure.
std::string Unicode2Ansi(const wchar_t* wide);
std::wstring Ansi2Unicode(const char* text);
