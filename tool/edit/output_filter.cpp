#include "tool/edit/output_filter.h"

#include "tool/system/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace tool {
namespace {

constexpr std::array<std::string_view, 2> failures = {"Invalid data", "No such file"};
constexpr std::string_view progress = "frame=";
constexpr size_t longestLine = 4096;
constexpr size_t mostHeld = 16384; // a damaged movie complains about each packet

// The time of a status line, such as "time=00:01:02.50", in seconds, or 0.
double TimeIn(std::string_view line)
{
    constexpr std::string_view label = " time=";
    const size_t at = line.find(label);
    if (at == std::string_view::npos) {
        return 0;
    }
    line.remove_prefix(at + label.size());
    double seconds = 0;
    for (int field = 0; field < 3; ++field) {
        const std::optional<double> value = TakeDecimal(line);
        const bool isLast = field == 2;
        if (!value || std::signbit(*value) || (!isLast && !line.starts_with(':'))) {
            return 0;
        }
        seconds = seconds * 60 + *value;
        line.remove_prefix(isLast ? 0 : 1);
    }
    return seconds;
}

} // namespace

bool TellsFailure(std::string_view text)
{
    return std::any_of(failures.begin(), failures.end(), [text](std::string_view words) {
        return text.find(words) != std::string_view::npos;
    });
}

std::string OutputFilter::Take(std::string_view bytes)
{
    std::string shown;
    for (const char byte : bytes) {
        if (byte != '\0') { // the recorder reads a chunk up to the first zero byte
            m_line += byte;
        }
        if (byte == '\n' || byte == '\r' || m_line.size() == longestLine) {
            shown += Shown(std::move(m_line));
            m_line.clear();
        }
    }
    return shown;
}

std::string OutputFilter::Shown(std::string line)
{
    m_seconds = std::max(m_seconds, TimeIn(line));
    if (TellsFailure(line)) {
        if (m_held.size() + line.size() <= mostHeld) {
            m_held += line;
        }
        return {};
    }
    for (size_t at = line.find(progress); at != std::string::npos; at = line.find(progress, at)) {
        line[at + progress.size() - 1] = ' ';
    }
    return line;
}

std::string OutputFilter::TakeRest()
{
    std::string rest = Shown(std::move(m_line));
    rest += m_held;
    if (!rest.empty() && rest.back() != '\n') {
        rest += '\n';
    }
    m_line.clear();
    m_held.clear();
    return rest;
}

} // namespace tool
