#include "tool/edit/torn_input.h"

#include "tool/mp4/fragments.h"
#include "tool/mp4/frugal_file.h"

namespace tool {

Arguments WithoutTornEnds(Arguments arguments)
{
    constexpr uint64_t allowance = 1U << 22U; // fragment headers of three days
    for (size_t i = 0; i + 1 < arguments.size(); ++i) {
        if (arguments[i] != "-i") {
            continue;
        }
        std::string& input = arguments[++i];
        FrugalFile file(input, allowance);
        if (const auto whole = CompleteSize(file)) {
            input.insert(0, "subfile,,start,0,end," + std::to_string(*whole) + ",,:");
        }
    }
    return arguments;
}

} // namespace tool
