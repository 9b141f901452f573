#include "tool/command/sections.h"

namespace tool {

std::vector<Section> SplitSections(const Arguments& arguments)
{
    std::vector<Section> sections(1);
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "-i" && i + 1 < arguments.size()) {
            sections.back().input = arguments[++i];
            sections.emplace_back();
        } else {
            sections.back().options.push_back(arguments[i]);
        }
    }
    return sections;
}

std::optional<std::string> ValueOf(const Arguments& options, std::string_view name)
{
    for (size_t i = 0; i + 1 < options.size(); ++i) {
        if (options[i] == name) {
            return options[i + 1];
        }
    }
    return std::nullopt;
}

size_t InputsIn(const Arguments& arguments)
{
    return SplitSections(arguments).size() - 1;
}

void Append(Arguments& target, const Arguments& more)
{
    target.insert(target.end(), more.begin(), more.end());
}

void Append(Arguments& target, const Section& section)
{
    Append(target, section.options);
    if (section.input) {
        Append(target, {"-i", *section.input});
    }
}

} // namespace tool
