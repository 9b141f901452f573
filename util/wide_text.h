#pragma once

#include <string>

// The name of the 8-bit encoding; empty before inner_initUnicodeMap.
extern char g_language[256];

// Sets up the conversions below, once, before other threads start. 0, or -1 when iconv does not
// know the encoding; the conversions then fail.
int inner_initUnicodeMap(const char* encoding);

// The conversions between wide strings and 8-bit text. They know the characters up to U+FFFF. All
// of the text is converted or nothing: -1, with an empty result, when a character has no
// counterpart, the result does not fit `size` units with its end, or nothing is set up; 0 when all
// went well.
int inner_uni2str(const wchar_t* wide, char* text, int size);
int inner_str2uni(const char* text, wchar_t* wide, int size);
int Unicode2Ansi(const wchar_t* wide, char* text, int size);
int Ansi2Unicode(const char* text, wchar_t* wide, int size);

// inner_uni2str for the first `length` characters, which need no end.
int inner_uni2str2(const wchar_t* wide, int length, char* text, int size);

// The same without a limit; empty on failure.
std::string Unicode2Ansi(const wchar_t* wide);
std::wstring Ansi2Unicode(const char* text);
