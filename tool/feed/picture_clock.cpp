#include "tool/feed/picture_clock.h"

#include "tool/system/numbers.h"

#include <algorithm>
#include <numeric>

namespace tool {
namespace {

constexpr int64_t nanoseconds = 1000000000;

// Digits only.
std::optional<int64_t> ParseCount(std::string_view text)
{
    constexpr size_t mostDigits = 9;
    return text.size() > mostDigits || text.starts_with('-') ? std::nullopt : ParseNumber(text);
}

std::optional<PictureRate> Checked(int64_t pictures, int64_t seconds)
{
    constexpr int64_t most = 1000;
    if (pictures <= 0 || seconds <= 0 || pictures > most * seconds) {
        return std::nullopt;
    }
    const int64_t common = std::gcd(pictures, seconds);
    return PictureRate{pictures / common, seconds / common};
}

} // namespace

std::optional<PictureRate> ParseRate(std::string_view text)
{
    const size_t sign = text.find_first_of("./");
    const auto first = ParseCount(text.substr(0, sign));
    if (!first || sign == std::string_view::npos) {
        return first ? Checked(*first, 1) : std::nullopt;
    }
    const std::string_view rest = text.substr(sign + 1);
    constexpr size_t mostDecimals = 5;
    const auto second = ParseCount(rest);
    if (!second || (text[sign] == '.' && rest.size() > mostDecimals)) {
        return std::nullopt;
    }
    if (text[sign] == '/') {
        return Checked(*first, *second);
    }
    int64_t scale = 1;
    for (size_t i = 0; i < rest.size(); ++i) {
        scale *= 10;
    }
    return Checked(*first * scale + *second, scale);
}

PictureClock::PictureClock(PictureRate rate, SteadyTime start) : m_rate(rate), m_start(start) {}

// Computes whole seconds separately: the product would overflow after a few hours.
SteadyTime PictureClock::Due(int64_t place) const
{
    const int64_t units = place * m_rate.seconds;
    const int64_t rest = units % m_rate.pictures * nanoseconds;
    // Rounded up, so that a grab at exactly this time belongs to this frame.
    return m_start + std::chrono::seconds(units / m_rate.pictures) +
           std::chrono::nanoseconds((rest + m_rate.pictures - 1) / m_rate.pictures);
}

int64_t PictureClock::PlaceAt(SteadyTime now, int64_t next) const
{
    const int64_t since =
        std::chrono::duration_cast<std::chrono::nanoseconds>(now - m_start).count();
    const int64_t whole = since / nanoseconds * m_rate.pictures;
    // From the remainder of the seconds and the rest; both factors are small.
    const int64_t rest =
        whole % m_rate.seconds * nanoseconds + since % nanoseconds * m_rate.pictures;
    return std::max(next, whole / m_rate.seconds + rest / (m_rate.seconds * nanoseconds));
}

} // namespace tool
