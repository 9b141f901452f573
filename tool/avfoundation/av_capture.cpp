// Recordings in which ffmpeg captures screen and sound itself.
#include "tool/avfoundation/av_devices.h"
#include "tool/avfoundation/av_inputs.h"
#include "tool/avfoundation/first_picture.h"
#include "tool/avfoundation/sound_arrangement.h"
#include "tool/capture/capture.h"
#include "tool/command/sections.h"
#include "tool/devices/remembered_devices.h"
#include "tool/ffmpeg/features.h"
#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/system/complaint.h"

#include <optional>
#include <utility>

namespace tool {
namespace {

constexpr std::chrono::seconds trialPatience{3}; // for a device that works: 1 s

// The text for one of the lists in the system's settings.
std::string Permission(const std::string& what, const std::string& list)
{
    return "macOS gives no " + what +
           ": allow Lumenfold Screen Recorder in System Settings, Privacy & Security, " + list +
           ", and start it again";
}

class AvCapture : public Capture
{
public:
    AvCapture(std::string ffmpeg, const Record& record, AvPlan plan)
        : m_ffmpeg(std::move(ffmpeg)),
          m_record(record),
          m_plan(std::move(plan))
    {
    }

    CaptureInputs Inputs() const override { return AvInputs(m_record, m_plan); }
    bool GrabsItself() const override { return true; }
    std::chrono::milliseconds FirstPicturePatience() const override { return firstPicturePatience; }
    std::string NoPictureReason(bool late) const override;

private:
    bool Works(const std::string& device, const Arguments& amount) const;

    std::string m_ffmpeg;
    const Record& m_record;
    AvPlan m_plan;
};

// Whether anything comes from the device. ffmpeg then reports how much it has taken.
bool AvCapture::Works(const std::string& device, const Arguments& amount) const
{
    Arguments arguments = {"-hide_banner", "-f", "avfoundation", "-i", device};
    Append(arguments, amount);
    Append(arguments, {"-f", "null", "-"});
    return Ask(m_ffmpeg, arguments, {.patience = trialPatience}).find("time=") != std::string::npos;
}

// A trial of each device tells which one is refused.
std::string AvCapture::NoPictureReason(bool late) const
{
    std::string screen = Permission("picture of the screen", "Screen Recording");
    if ((late && m_plan.sounds.empty()) ||
        !Works(std::to_string(m_plan.screen), {"-frames:v", "1"})) {
        return screen;
    }
    for (const size_t sound : m_plan.sounds) {
        if (!Works(AvSoundName(sound), {"-t", "0.1"})) {
            return Permission("sound", "Microphone");
        }
    }
    return late ? screen : std::string();
}

// Returns nothing, after a message, if a device is not in the list any more.
std::optional<std::vector<size_t>> FindSounds(const std::vector<int>& numbers,
                                              const AvDevices& devices)
{
    std::vector<std::string> known;
    if (auto recalled = RecallDevices()) {
        known = *std::move(recalled);
    } else {
        for (const SoundDevice& device : ArrangeAvSound(devices.sound)) {
            known.push_back(device.source);
        }
    }
    std::vector<size_t> places;
    for (const int number : numbers) {
        if (static_cast<size_t>(number) >= known.size()) {
            Complain("there is no audio device " + std::to_string(number) + ", the list has " +
                     std::to_string(known.size()));
            return std::nullopt;
        }
        const auto place = PlaceOf(known[static_cast<size_t>(number)], devices.sound);
        if (!place) {
            Complain("audio device " + std::to_string(number) +
                     " is not connected any more: connect it, or start the recorder again to "
                     "choose another one");
            return std::nullopt;
        }
        places.push_back(*place);
    }
    return places;
}

} // namespace

std::unique_ptr<Capture> OpenCapture(const std::string& ffmpeg, const Record& record,
                                     RecordingTime& /*time*/)
{
    const FoundAvDevices found = FindAvDevices(ffmpeg);
    if (found.Screens() == 0) {
        Complain(found.noneReason);
        return nullptr;
    }
    const auto screen = static_cast<size_t>(record.screen);
    if (screen >= found.Screens()) {
        Complain("there is no screen " + std::to_string(screen) + ", the list has " +
                 std::to_string(found.Screens()));
        return nullptr;
    }
    auto sounds = FindSounds(record.sounds, found.devices);
    if (!sounds) {
        return nullptr;
    }
    AvPlan plan{found.firstScreen + screen, *std::move(sounds), FeaturesOf(ffmpeg).inputSync};
    return std::make_unique<AvCapture>(ffmpeg, record, std::move(plan));
}

} // namespace tool
