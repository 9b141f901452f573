#pragma once

#include <algorithm>
#include <iterator>

namespace tool {

// Whether `values` contains `value`.
template <typename Values, typename Value>
bool IsOneOf(const Values& values, const Value& value)
{
    return std::find(std::begin(values), std::end(values), value) != std::end(values);
}

} // namespace tool
