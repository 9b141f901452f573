#include "tool/avfoundation/sound_arrangement.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace tool {
namespace {

using Words = std::string_view;

// Words in the names of devices that repeat what the computer plays, best first. Names given by the
// system are in its language.
constexpr std::array<Words, 14> loopbackWords = {
    "blackhole",       "soundflower",        "loopback", "vb-cable",   "virtual",    "virtuell",
    "virtuel",         "aggregate",          "agrégé",   "hauptgerät", "機器セット", "multi-output",
    "sortie multiple", "mehreren ausgängen",
};

// Devices of meeting programs. They are silent outside a meeting.
constexpr std::array<Words, 2> meetingWords = {"zoomaudiodevice", "microsoft teams audio"};

// Microphones that may be in another room.
constexpr std::array<Words, 2> phoneWords = {"iphone", "ipad"};

// In lower case, as far as it is ASCII.
std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) {
        return letter < 0x80 ? static_cast<char>(std::tolower(letter)) : static_cast<char>(letter);
    });
    return text;
}

// The place of the first word that the name has; their number if it has none.
template <size_t Count>
size_t FirstWord(const std::array<Words, Count>& words, const AvDevice& device)
{
    const std::string name = Lower(device.name);
    const auto* found = std::find_if(words.begin(), words.end(), [&](Words word) {
        return name.find(word) != std::string::npos;
    });
    return static_cast<size_t>(found - words.begin());
}

bool IsMicrophone(const AvDevice& device)
{
    return FirstWord(loopbackWords, device) == loopbackWords.size() &&
           FirstWord(meetingWords, device) == meetingWords.size();
}

// Which of the devices of this name it is.
size_t Occurrence(const std::vector<AvDevice>& devices, size_t place)
{
    const auto end = devices.begin() + static_cast<ptrdiff_t>(place);
    return static_cast<size_t>(std::count_if(devices.begin(), end, [&](const AvDevice& other) {
        return other.name == devices[place].name;
    }));
}

// One line: "uid UID", or "name N NAME" for the Nth device of this name.
std::string SourceOf(const std::vector<AvDevice>& devices, size_t place)
{
    const AvDevice& device = devices[place];
    return device.uid.empty()
               ? "name " + std::to_string(Occurrence(devices, place)) + " " + device.name
               : "uid " + device.uid;
}

} // namespace

std::vector<SoundDevice> ArrangeAvSound(const std::vector<AvDevice>& devices)
{
    std::vector<SoundDevice> microphones;
    std::vector<SoundDevice> phones;
    size_t best = loopbackWords.size();
    std::optional<size_t> loopback;
    for (size_t i = 0; i < devices.size(); ++i) {
        if (IsMicrophone(devices[i])) {
            const bool phone = FirstWord(phoneWords, devices[i]) < phoneWords.size();
            (phone ? phones : microphones)
                .push_back({MicrophoneTitle(devices[i].name), SourceOf(devices, i)});
        } else if (FirstWord(loopbackWords, devices[i]) < best) {
            best = FirstWord(loopbackWords, devices[i]);
            loopback = i;
        }
    }
    microphones.insert(microphones.end(), phones.begin(), phones.end());
    if (loopback) {
        microphones.push_back(
            {ComputerTitle(devices[*loopback].name), SourceOf(devices, *loopback)});
    } else if (microphones.size() > 1) {
        microphones.resize(1);
    }
    return microphones;
}

std::optional<size_t> PlaceOf(const std::string& source, const std::vector<AvDevice>& devices)
{
    for (size_t i = 0; i < devices.size(); ++i) {
        if (SourceOf(devices, i) == source) {
            return i;
        }
    }
    return std::nullopt;
}

} // namespace tool
