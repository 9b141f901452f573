#include "util/path.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

constexpr int kInvalidParameter = 87;

enum class Place { Free, Taken, Unknown };

Place LookUp(const std::wstring& path)
{
    try {
        std::error_code error;
        // As UTF-32: a wide string would be converted by the locale, which may be plain ASCII.
        const std::filesystem::path utf32(std::u32string(path.begin(), path.end()));
        const auto type = std::filesystem::symlink_status(utf32, error).type();
        if (type == std::filesystem::file_type::not_found) {
            return Place::Free;
        }
        return type == std::filesystem::file_type::none ? Place::Unknown : Place::Taken;
    } catch (const std::exception&) {
        return Place::Unknown; // no file can have this name
    }
}

std::wstring FreeName(const std::wstring& path)
{
    if (LookUp(path) != Place::Taken) {
        return path;
    }
    const std::size_t nameStart = path.rfind(L'/') + 1; // 0 without a "/"
    std::size_t dot = path.rfind(L'.');
    if (dot == std::wstring::npos || dot <= nameStart) {
        dot = path.size();
    }
    for (long long number = 1;; ++number) {
        const std::wstring name =
            path.substr(0, dot) + L" (" + std::to_wstring(number) + L")" + path.substr(dot);
        const Place place = LookUp(name);
        if (place != Place::Taken) {
            return place == Place::Free ? name : std::wstring();
        }
    }
}

void CopyTo(char* out, std::string_view text)
{
    *std::copy(text.begin(), text.end(), out) = '\0';
}

} // namespace

void GetRealFileName(const wchar_t* in, wchar_t* out, int size)
{
    if (size < 1) {
        return;
    }
    const std::wstring name = FreeName(in);
    const bool fits = name.size() < static_cast<std::size_t>(size);
    std::wmemcpy(out, name.c_str(), fits ? name.size() + 1 : 0);
    if (!fits) {
        *out = L'\0';
    }
}

int GetExtendName(const char* name, char* ext)
{
    const char* dot = name != nullptr ? std::strrchr(name, '.') : nullptr;
    if (dot == nullptr || ext == nullptr) {
        return kInvalidParameter;
    }
    CopyTo(ext, dot + 1);
    return 0;
}

void _splitpath(const char* path, char* drive, char* dir, char* fname, char* ext)
{
    const std::string_view whole = path != nullptr ? path : "";
    const std::size_t nameStart = whole.rfind('/') + 1; // 0 without a "/"
    const std::string_view name = whole.substr(nameStart);
    const std::size_t dot = std::min(name.rfind('.'), name.size());
    CopyTo(drive, "");
    CopyTo(dir, whole.substr(0, nameStart));
    CopyTo(fname, name.substr(0, dot));
    CopyTo(ext, name.substr(dot));
}

int GetPathDirIndex(const wchar_t* path, int& count)
{
    std::wstring_view inner = path;
    inner.remove_suffix(inner.empty() ? 0 : 1);
    count = static_cast<int>(std::count_if(inner.begin(), inner.end(),
                                           [](wchar_t c) { return c == L'/' || c == L'\\'; }));
    return 0;
}

void EraseStringTailBlankChar(char* s, int length)
{
    for (int i = length - 1; i >= 0 && s[i] == ' '; --i) {
        s[i] = '\0';
    }
}

void Convert2Lowercase(char* s)
{
    for (; *s != '\0'; ++s) {
        if (*s >= 'A' && *s <= 'Z') {
            *s = static_cast<char>(*s - 'A' + 'a');
        }
    }
}

void GetCharLowerA(char* s)
{
    Convert2Lowercase(s);
}
