#include "util/wide_text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iconv.h>
#include <memory>
#include <optional>
#include <string_view>

char g_language[256] = "";

namespace {

auto* const kInvalid =
    reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr): iconv's way
constexpr wchar_t kLastCharacter = 0xffff;

iconv_t g_toWide = kInvalid;
iconv_t g_toText = kInvalid;

// Converts all of `input` or nothing.
std::optional<std::string> Convert(iconv_t descriptor, std::string_view input)
{
    if (descriptor == kInvalid) {
        return {};
    }
    iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
    // No encoding needs more than six bytes per input byte, shift sequences included.
    std::string output(input.size() * 6 + 16, '\0');
    char* from = const_cast<char*>(input.data()); // iconv only reads it
    char* to = output.data();
    std::size_t fromLeft = input.size();
    std::size_t toLeft = output.size();
    // A result above 0 counts characters replaced by similar ones, which is a failure here.
    if (iconv(descriptor, &from, &fromLeft, &to, &toLeft) != 0 ||
        iconv(descriptor, nullptr, nullptr, &to, &toLeft) != 0) {
        return {};
    }
    output.resize(output.size() - toLeft);
    return output;
}

std::optional<std::string> ToText(std::wstring_view wide)
{
    if (std::any_of(wide.begin(), wide.end(), [](wchar_t c) { return c > kLastCharacter; })) {
        return {};
    }
    return Convert(g_toText,
                   {reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t)});
}

std::optional<std::wstring> ToWide(std::string_view text)
{
    const auto bytes = Convert(g_toWide, text);
    if (!bytes || bytes->size() % sizeof(wchar_t) != 0) {
        return {};
    }
    std::wstring wide(bytes->size() / sizeof(wchar_t), L'\0');
    std::memcpy(wide.data(), bytes->data(), bytes->size());
    if (std::any_of(wide.begin(), wide.end(), [](wchar_t c) { return c > kLastCharacter; })) {
        return {};
    }
    return wide;
}

template <typename Text, typename Unit>
int Store(const std::optional<Text>& text, Unit* out, int size)
{
    const bool fits = text && size > 0 && text->size() < static_cast<std::size_t>(size);
    if (fits) {
        std::copy_n(text->c_str(), text->size() + 1, out);
    } else if (size > 0) {
        *out = Unit();
    }
    return fits ? 0 : -1;
}

void Close(iconv_t& descriptor)
{
    if (descriptor != kInvalid) {
        iconv_close(descriptor);
        descriptor = kInvalid;
    }
}

int Open(const char* encoding, const char* wideEncoding)
{
    Close(g_toWide);
    Close(g_toText);
    g_toWide = iconv_open(wideEncoding, encoding);
    if (g_toWide == kInvalid) {
        return -1;
    }
    g_toText = iconv_open(encoding, wideEncoding);
    if (g_toText == kInvalid) {
        Close(g_toWide);
        return -1;
    }
    return 0;
}

} // namespace

int inner_initUnicodeMap(const char* encoding)
{
    std::snprintf(g_language, sizeof g_language, "%s", encoding);
    if (Open(g_language, "UNICODELITTLE") == 0 && ToWide("ab") == L"ab") {
        return 0;
    }
    // Some iconv libraries do not know the name, and current ones use two-byte units for it. This
    // name means the same characters in units as wide as wchar_t.
    return Open(g_language, "UCS-4LE");
}

int inner_uni2str(const wchar_t* wide, char* text, int size)
{
    return Store(ToText(wide), text, size);
}

int inner_uni2str2(const wchar_t* wide, int length, char* text, int size)
{
    return Store(ToText({wide, static_cast<std::size_t>(std::max(length, 0))}), text, size);
}

int inner_str2uni(const char* text, wchar_t* wide, int size)
{
    return Store(ToWide(text), wide, size);
}

int Unicode2Ansi(const wchar_t* wide, char* text, int size)
{
    return inner_uni2str(wide, text, size);
}

int Ansi2Unicode(const char* text, wchar_t* wide, int size)
{
    return inner_str2uni(text, wide, size);
}

std::string Unicode2Ansi(const wchar_t* wide)
{
    return ToText(wide).value_or("");
}

std::wstring Ansi2Unicode(const char* text)
{
    return ToWide(text).value_or(L"");
}
