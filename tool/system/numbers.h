#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tool {

// A decimal integer, with a sign if it is negative, and nothing else. Returns nothing for other
// texts and for numbers that do not fit.
template <typename Number = int64_t>
std::optional<Number> ParseNumber(std::string_view text)
{
    Number value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end ? std::optional(value) : std::nullopt;
}

} // namespace tool
