#include "tool/system/numbers.h"

#include <algorithm>

namespace tool {
namespace {

constexpr size_t mostDigits = 15; // a double holds these exactly

bool IsNoDigit(char sign)
{
    return sign < '0' || sign > '9';
}

std::string_view TakeDigits(std::string_view& text)
{
    const auto end = std::find_if(text.begin(), text.end(), IsNoDigit);
    const std::string_view digits = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    return digits;
}

} // namespace

std::optional<double> TakeDecimal(std::string_view& text)
{
    std::string_view rest = text;
    const bool isNegative = rest.starts_with('-');
    rest.remove_prefix(isNegative ? 1 : 0);
    const std::string_view whole = TakeDigits(rest);
    if (whole.empty() || whole.size() > mostDigits) {
        return std::nullopt;
    }
    std::string_view fraction;
    if (rest.starts_with('.')) {
        rest.remove_prefix(1);
        fraction = TakeDigits(rest).substr(0, mostDigits - whole.size());
    }
    double value = 0;
    double unit = 1;
    for (const char digit : whole) {
        value = value * 10 + (digit - '0');
    }
    for (const char digit : fraction) {
        value = value * 10 + (digit - '0');
        unit *= 10;
    }
    text = rest;
    return (isNegative ? -value : value) / unit;
}

} // namespace tool
