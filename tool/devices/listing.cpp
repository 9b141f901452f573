#include "tool/devices/listing.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace tool {
namespace {

constexpr std::string_view microphoneWord = "Microphone";

// Replaces until none is left: a replacement can form a new occurrence with its surroundings.
void ReplaceAll(std::string& text, std::string_view from, std::string_view to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from)) {
        text.replace(at, from.size(), to);
    }
}

// The name for people.
const std::string& NameOf(const SoundSource& source)
{
    return source.description.empty() ? source.name : source.description;
}

} // namespace

std::string MicrophoneTitle(const std::string& name)
{
    std::string plain = PlainName(name);
    if (plain.find(microphoneWord) != std::string::npos) {
        return plain;
    }
    return std::string(microphoneWord) + " (" + plain + ")";
}

std::string ComputerTitle(const std::string& name)
{
    std::string plain = PlainName(name);
    ReplaceAll(plain, microphoneWord, "Mic");
    constexpr std::string_view prefix = "Monitor of ";
    if (plain.starts_with(prefix)) {
        plain.erase(0, prefix.size());
    }
    return "Computer sounds (" + plain + ")";
}

std::string PlainName(const std::string& name)
{
    std::string plain = name;
    for (char& letter : plain) {
        if (letter == '[') {
            letter = '(';
        } else if (letter == ']') {
            letter = ')';
        } else if (static_cast<unsigned char>(letter) < ' ' || letter == '\x7f') {
            letter = ' ';
        }
    }
    // The recorder would take a device with this name for a screen.
    ReplaceAll(plain, "Capture screen", "Capture-screen");
    // The recorder would take this for the header of a list.
    ReplaceAll(plain, "devices:", "devices");
    return plain;
}

std::vector<SoundDevice> ArrangeSoundDevices(const SoundServer& server)
{
    std::vector<SoundDevice> devices;
    const SoundSource* monitor = nullptr;
    for (const SoundSource& source : server.sources) {
        if (!source.monitorOf.empty()) {
            if (source.monitorOf == server.defaultSink) {
                monitor = &source;
            }
            continue;
        }
        const bool leads = source.name == server.defaultSource;
        devices.insert(leads ? devices.begin() : devices.end(),
                       {MicrophoneTitle(NameOf(source)), source.name});
    }
    if (monitor != nullptr) {
        devices.push_back({ComputerTitle(NameOf(*monitor)), computerSounds});
    } else if (devices.size() > 1) {
        devices.resize(1);
    }
    return devices;
}

std::string ListingText(const Listing& listing, uintptr_t tag)
{
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "[AVFoundation indev @ 0x%jx] ",
                  static_cast<uintmax_t>(tag));
    const std::string start = buffer.data();
    std::string text;
    const auto line = [&](const std::string& words) { text.append(start).append(words) += '\n'; };
    const auto device = [&](size_t number, const std::string& title) {
        line(std::string("[").append(std::to_string(number)).append("] ").append(title));
    };
    line("AVFoundation video devices:");
    for (size_t i = 0; i < listing.screens; ++i) {
        device(i, "Capture screen " + std::to_string(i));
    }
    if (listing.screens == 0) {
        line(PlainName(listing.noScreenReason));
    }
    if (!listing.sound.empty()) {
        line("AVFoundation audio devices:");
    }
    for (size_t i = 0; i < listing.sound.size(); ++i) {
        device(i, listing.sound[i].title);
    }
    // The list ends like ffmpeg's on macOS, which cannot open the device " ".
    return text.append(" : Input/output error\n");
}

} // namespace tool
