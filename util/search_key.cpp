#include "util/search_key.h"

#include <cstring>
#include <string_view>

bool IsBoostSearchKeyLetter(wchar_t c)
{
    constexpr std::wstring_view kLetters = L".^$+?{}[]";
    return kLetters.find(c) != std::wstring_view::npos;
}

std::wstring ReplaceSearchKey(const wchar_t* pattern)
{
    std::wstring escaped;
    for (const wchar_t c : std::wstring_view(pattern)) {
        if (IsBoostSearchKeyLetter(c)) {
            escaped += L'\\';
        }
        escaped += c;
    }
    return escaped;
}

bool IsNtfsFileRecord(const unsigned char* record, int size)
{
    constexpr std::string_view kSignature = "FILE";
    return record != nullptr && size >= static_cast<int>(kSignature.size()) &&
           std::memcmp(record, kSignature.data(), kSignature.size()) == 0;
}
