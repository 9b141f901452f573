#include "tool/avfoundation/device_text.h"

#include "tool/system/numbers.h"

#include <algorithm>
#include <optional>

namespace tool {
namespace {

constexpr std::string_view tagStart = "[AVFoundation ";
constexpr std::string_view uidStart = "[uid:";

// What follows the tag of a line, or nothing if another component has written it.
std::optional<std::string_view> WithoutTag(std::string_view line)
{
    const size_t end = line.find("] ");
    if (!line.starts_with(tagStart) || end == std::string_view::npos) {
        return std::nullopt;
    }
    return line.substr(end + 2);
}

// "Name  [uid:...]", or the name alone.
AvDevice DeviceOf(std::string_view text)
{
    const size_t uid = text.rfind(uidStart);
    if (uid == std::string_view::npos || !text.ends_with(']')) {
        return {std::string(text), {}};
    }
    const std::string_view name = text.substr(0, uid);
    const size_t last = name.find_last_not_of(' ');
    const size_t from = uid + uidStart.size();
    return {std::string(name.substr(0, last == std::string_view::npos ? 0 : last + 1)),
            std::string(text.substr(from, text.size() - from - 1))};
}

// Adds the device of a line such as "[1] Name", if its number is the next one.
void AddDevice(std::vector<AvDevice>& devices, std::string_view line)
{
    const size_t end = line.find("] ");
    if (line.starts_with('[') && end != std::string_view::npos &&
        ParseNumber<size_t>(line.substr(1, end - 1)) == devices.size()) {
        devices.push_back(DeviceOf(line.substr(end + 2)));
    }
}

} // namespace

AvDevices ParseDeviceText(std::string_view text)
{
    AvDevices result;
    std::vector<AvDevice>* list = nullptr;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        const auto words = WithoutTag(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (words == "AVFoundation video devices:") {
            list = &result.video;
            result.isListed = true;
        } else if (words == "AVFoundation audio devices:") {
            list = &result.sound;
        } else if (words && list != nullptr) {
            AddDevice(*list, *words);
        }
    }
    return result;
}

size_t FirstScreen(const std::vector<AvDevice>& video)
{
    size_t first = video.size();
    const auto isScreen = [&](size_t place, size_t number) {
        return video[place].name == "Capture screen " + std::to_string(number);
    };
    // The last one's number tells how many there are.
    for (size_t count = video.size(); count > 0 && first == video.size(); --count) {
        size_t matching = 0;
        while (matching < count && isScreen(video.size() - count + matching, matching)) {
            ++matching;
        }
        if (matching == count) {
            first = video.size() - count;
        }
    }
    return first;
}

} // namespace tool
