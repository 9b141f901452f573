// The list of capture devices: any text parsed by the recorder, and the list `tool` prints for any
// devices, parsed again.
#include "jobs/device_listing.h"
#include "jobs/record_command.h"
#include "tests/fuzz/target.h"
#include "tool/devices/listing.h"
#include "tool/devices/remembered_devices.h"

#include <QProcess>

#include <algorithm>

namespace {

constexpr int largestIndex = 99999999;

void CheckChoices(const DeviceListing& listing)
{
    QVector<int> expected;
    if (listing.microphone >= 0 && listing.sound >= 0) {
        expected << kAudioBoth;
    }
    if (listing.sound >= 0) {
        expected << listing.sound;
    }
    if (listing.microphone >= 0) {
        expected << listing.microphone;
    }
    QVector<int> offered;
    for (const AudioChoice& choice : listing.choices) {
        offered << choice.data;
    }
    Require(offered == expected, "what was found is offered, in order");
}

void CheckAnyText(const QString& text)
{
    const DeviceListing listing = ParseDeviceListing(text);
    Require(listing.screen == 0 || text.contains(" [" + QString(QLatin1Char(listing.screen))),
            "the screen's index is from the text");
    Require(listing.microphone >= -1 && listing.microphone <= largestIndex, "an index is limited");
    Require(listing.sound >= -1 && listing.sound <= largestIndex, "an index is limited");
    Require(listing.sound == -1 || listing.sound != listing.microphone,
            "the same device is not offered twice");
    CheckChoices(listing);
    const RecordDevices devices{'1', listing.microphone, listing.sound};
    for (const AudioChoice& choice : listing.choices) {
        const QStringList words = QProcess::splitCommand(
            RecordCommand("\"/a b/tool\"", devices, choice.data, "/v w/1 2.mp4"));
        Require(words.size() == (choice.data == kAudioBoth ? 24 : 20) &&
                    words.first() == "/a b/tool" && words.last() == "/v w/1 2.mp4",
                "every choice gives a command of as many words");
    }
}

// The first line has the number of screens and the default devices. Each further line describes a
// source; "m" makes it the monitor of an output.
tool::SoundServer ServerOf(const std::vector<std::string>& lines)
{
    tool::SoundServer server;
    for (size_t i = 1; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        const std::string name = "source" + std::to_string(i);
        const bool isMonitor = line.starts_with('m');
        server.sources.push_back({name, line.substr(std::min<size_t>(1, line.size())),
                                  isMonitor ? "sink" + std::to_string(i) : std::string()});
    }
    const std::string& first = lines.front();
    server.defaultSource = "source" + std::to_string(first.size() % 4);
    server.defaultSink = "sink" + std::to_string(first.size() % 5);
    return server;
}

void CheckOwnListing(const std::vector<std::string>& lines)
{
    tool::Listing own;
    own.screens = lines.front().empty() ? 0 : static_cast<unsigned char>(lines.front()[0]) % 12;
    own.noScreenReason = lines.back();
    const tool::SoundServer server = ServerOf(lines);
    own.sound = tool::ArrangeSoundDevices(server);
    const std::string text = tool::ListingText(own, 0x7f0000001000);
    const DeviceListing read = ParseDeviceListing(QString::fromLatin1(text.c_str()));
    Require(read.screen == (own.screens > 0 ? '0' : '\0'), "the first screen is found: " + text);

    const int last = static_cast<int>(own.sound.size()) - 1;
    const bool hasMonitor = last >= 0 && own.sound.back().source == tool::computerSounds;
    Require(hasMonitor == std::any_of(server.sources.begin(), server.sources.end(),
                                      [&](const tool::SoundSource& source) {
                                          return source.monitorOf == server.defaultSink;
                                      }),
            "the default output's monitor is listed");
    Require(read.sound == (hasMonitor ? last : -1), "the computer's sounds are found: " + text);
    Require(read.microphone == (last >= (hasMonitor ? 1 : 0) ? 0 : -1),
            "the first microphone is found: " + text);
}

void CheckRemembered(std::vector<std::string> lines)
{
    const std::string server = lines.front();
    lines.erase(lines.begin());
    const std::string text = tool::RememberedText(server, lines);
    Require(tool::ParseRemembered(text, server) == lines, "what is remembered is recalled");
    Require(!tool::ParseRemembered(text, server + "x"), "another server's list is not taken");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    CheckAnyText(ToolTextOf(data, size));
    const std::vector<std::string> lines = LinesOf(TextOf(data, size));
    tool::ParseRemembered(TextOf(data, size), "");
    if (!lines.empty()) {
        CheckOwnListing(lines);
        CheckRemembered(lines);
    }
    return 0;
}
