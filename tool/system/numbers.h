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

// The decimal number at the start of a text, such as 29.97 in "29.97 fps", and takes it off the
// text. It may begin with a minus and may have a fraction, but no exponent. Returns nothing, and
// leaves the text, if there is none or it has more than 15 digits before its point. Not
// std::from_chars: that reads "inf" and "nan" too, and not every standard library has it.
std::optional<double> TakeDecimal(std::string_view& text);

} // namespace tool
