// `tool`: the stock ffmpeg behind the macOS capture interface that the recorder uses. Lists devices
// and reads the duration of ordinary MP4s itself. For everything else it translates the arguments
// and becomes ffmpeg.
//
// Its own exit codes: 1 for a list or a duration (like ffmpeg, which ends both with an error) and
// for a device that does not exist; 127 if there is no ffmpeg.
#include "tool/command/arguments.h"
#include "tool/devices/listing.h"
#include "tool/devices/remembered_devices.h"
#include "tool/edit/conversion.h"
#include "tool/edit/cut.h"
#include "tool/edit/join.h"
#include "tool/edit/torn_input.h"
#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"
#include "tool/record/early_keys.h"
#include "tool/record/end_signal.h"
#include "tool/record/keeper.h"
#include "tool/record/recording_time.h"
#include "tool/record/screen_feeder.h"
#include "tool/record/sound_feeder.h"
#include "tool/screen/x11/monitors.h"
#include "tool/sound/pulse/sound_devices.h"
#include "tool/system/ask_child.h"
#include "tool/system/environment.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int failed = 1;
constexpr int noProgram = 127;
constexpr std::chrono::milliseconds soundPatience{1500};
constexpr std::chrono::seconds untilFirstPicture{20}; // measured: 130 ms, 4 s on a busy machine

int Complain(const std::string& sentence, int code)
{
    std::fprintf(stderr, "tool: %s.\n", sentence.c_str());
    return code;
}

std::string NoScreenReason()
{
    const std::string display = tool::Variable("DISPLAY");
    std::string reason = display.empty() ? "No screen can be recorded: DISPLAY is not set"
                                         : "No screen can be recorded: the X display " + display +
                                               " cannot be opened";
    if (!tool::Variable("WAYLAND_DISPLAY").empty()) {
        reason += "; a Wayland session without X gives programs no access to the screen";
    }
    return reason + ".";
}

std::string NoFfmpegReason()
{
    const std::string chosen = tool::Variable("LUMENFOLD_FFMPEG");
    if (chosen.empty()) {
        return "no ffmpeg is installed: neither beside this program nor in PATH";
    }
    return "LUMENFOLD_FFMPEG names " + chosen +
           (tool::IsAbsolute(chosen) ? ", which is not an executable file"
                                     : ", which is not a full path");
}

std::vector<tool::SoundDevice> ReadSoundDevices()
{
    const auto server = tool::ReadSoundServer(soundPatience);
    return server ? tool::ArrangeSoundDevices(*server) : std::vector<tool::SoundDevice>();
}

std::vector<std::string> SourcesOf(const std::vector<tool::SoundDevice>& devices)
{
    std::vector<std::string> sources;
    sources.reserve(devices.size());
    for (const tool::SoundDevice& device : devices) {
        sources.push_back(device.source);
    }
    return sources;
}

int PrintListing()
{
    tool::Listing listing;
    if (const auto monitors = tool::ReadMonitors(tool::Variable("DISPLAY"))) {
        listing.screens = monitors->size();
    } else {
        listing.noScreenReason = NoScreenReason();
    }
    listing.sound = ReadSoundDevices();
    tool::RememberDevices(SourcesOf(listing.sound));
    const std::string text =
        tool::ListingText(listing, reinterpret_cast<uintptr_t>(&listing) & 0xffffffffffff);
    std::fwrite(text.data(), 1, text.size(), stderr);
    return failed;
}

// libpulse does not work on both sides of a fork, so a child process asks.
std::vector<std::string> AskForSources()
{
    const std::string answer = tool::AskChild([](int output) {
        const std::string text = tool::RememberedText({}, SourcesOf(ReadSoundDevices()));
        // A pipe has room for far more than all names.
        [[maybe_unused]] const ssize_t written = write(output, text.data(), text.size());
    });
    return tool::ParseRemembered(answer, {}).value_or(std::vector<std::string>());
}

// Returns the names of the sources. Returns nothing, after a message, if a number is not in the
// list.
std::optional<std::vector<std::string>> ResolveSources(const std::vector<int>& indices)
{
    const auto recalled = tool::RecallDevices();
    const std::vector<std::string> known = recalled || indices.empty()
                                               ? recalled.value_or(std::vector<std::string>())
                                               : AskForSources();
    std::vector<std::string> chosen;
    for (const int index : indices) {
        if (static_cast<size_t>(index) >= known.size()) {
            Complain("there is no audio device " + std::to_string(index) + ", the list has " +
                         std::to_string(known.size()),
                     failed);
            return std::nullopt;
        }
        chosen.push_back(known[static_cast<size_t>(index)]);
    }
    return chosen;
}

int Become(const std::string& ffmpeg, const tool::Arguments& arguments)
{
    tool::Become(ffmpeg, arguments);
    return Complain(ffmpeg + " cannot be run: " + std::strerror(errno), noProgram);
}

// Returns the frame pipe, or nothing if ffmpeg should grab the screen itself.
std::optional<int> StartPictures(const tool::CapturePlan& plan, const tool::Arguments& arguments,
                                 tool::RecordingTime* start)
{
    const auto rate = tool::ParseRate(tool::FrameRate(arguments));
    if (!rate || !tool::WantsYuv420(arguments)) {
        return std::nullopt;
    }
    return tool::StartScreenFeeder({plan.display, plan.area, *rate, start});
}

int Record(const std::string& ffmpeg, const tool::Arguments& arguments,
           const tool::Request& request, pid_t recorder)
{
    tool::CapturePlan plan;
    plan.display = tool::Variable("DISPLAY");
    const auto monitors = tool::ReadMonitors(plan.display);
    if (!monitors) {
        std::fprintf(stderr, "tool: %s\n", NoScreenReason().c_str());
        return failed;
    }
    if (static_cast<size_t>(request.screen) >= monitors->size()) {
        return Complain("there is no screen " + std::to_string(request.screen) +
                            ", the display has " + std::to_string(monitors->size()),
                        failed);
    }
    plan.area = tool::EvenSized((*monitors)[static_cast<size_t>(request.screen)]);
    const auto sources = ResolveSources(request.audio);
    if (!sources) {
        return failed;
    }
    plan.knowsStatsPeriod = tool::KnowsOption(ffmpeg, "stats_period");
    // If the recorder dies, nothing else would stop ffmpeg. This signal makes it finish the file,
    // and survives the exec.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != recorder) {
        return failed; // it has died already
    }
    const bool passesKeys = tool::HoldEarlyKeys(STDIN_FILENO, arguments.back(), untilFirstPicture);
    const bool keepsFile =
        tool::RecordsInPieces(arguments) && tool::StartKeeper(arguments.back(), !passesKeys);
    tool::RecordingTime* start = tool::RecordingTime::Make();
    plan.screenPipe = StartPictures(plan, arguments, start);
    if (!sources->empty()) {
        // A screen feeder that was given up exits early. It must not end the sound.
        const int pipe = tool::StartSoundFeeder({*sources, tool::SampleRate(arguments)},
                                                plan.screenPipe ? start : nullptr);
        if (pipe < 0) {
            return Complain(std::string("no sound can be read: ") + std::strerror(errno), failed);
        }
        plan.soundPipe = pipe;
    }
    if (passesKeys || keepsFile) {
        tool::KeepEndSignals();
    } else {
        std::signal(SIGHUP, SIG_IGN); // nothing handles it; PR_SET_PDEATHSIG still works
    }
    return Become(ffmpeg, tool::TranslateCapture(arguments, plan));
}

std::optional<tool::Movie> Look(const std::string& path)
{
    tool::FrugalFile file(path, tool::movieAllowance);
    return tool::ReadMovie(file);
}

// A cut that starts after the end is passed on unchanged: seeking would give the last frames.
bool BeginsInside(const tool::Cut& cut)
{
    constexpr int64_t second = 1000000;
    const auto movie = Look(cut.source);
    return !movie || !movie->duration || movie->fragmented ||
           cut.start < (*movie->duration + second - 1) / second;
}

// Copies parts that fit together and re-encodes others. The encoding ffmpeg opens all parts before
// it starts, so it finishes even if they are deleted meanwhile.
int JoinParts(const std::string& ffmpeg, const tool::Arguments& arguments, const tool::Join& join)
{
    if (join.parts.empty() || tool::CanBeCopied(join)) {
        const bool dropsOverlap = join.parts.size() > 1 && tool::KnowsOption(ffmpeg, "fps_mode");
        return Become(ffmpeg, tool::CopyingJoin(arguments, dropsOverlap));
    }
    tool::Arguments question = {"-hide_banner"};
    for (const std::string& part : join.parts) {
        question.insert(question.end(), {"-i", part});
    }
    const std::string answer = tool::Ask(ffmpeg, question);
    const auto parts = tool::ParseDescriptions(answer);
    if (parts.size() != join.parts.size()) {
        // ffmpeg's output says which part it cannot read.
        std::fwrite(answer.data(), 1, answer.size(), stderr);
        return failed;
    }
    for (size_t i = 0; i < parts.size(); ++i) {
        if (!parts[i].HasPicture() && !parts[i].HasSound()) {
            return Complain(join.parts[i] + ": Invalid data: neither picture nor sound", failed);
        }
    }
    return Become(ffmpeg, tool::EncodingJoin(join, parts));
}

int PassOn(const std::string& ffmpeg, const tool::Arguments& arguments)
{
    if (const auto cut = tool::ReadCut(arguments); cut && BeginsInside(*cut)) {
        return Become(ffmpeg, tool::TranslateCut(*cut));
    }
    if (const auto conversion = tool::ReadConversion(arguments)) {
        const auto intermediate = tool::ChooseIntermediate(Look(conversion->source));
        return Become(ffmpeg, tool::TranslateConversion(*conversion, intermediate));
    }
    if (const auto join = tool::ReadJoin(arguments)) {
        return JoinParts(ffmpeg, arguments, *join);
    }
    return Become(ffmpeg, tool::TranslatePassThrough(arguments));
}

} // namespace

int main(int count, char** values)
{
    const pid_t recorder = getppid();
    const tool::Arguments arguments(values + (count > 0 ? 1 : 0), values + count);
    if (arguments.size() == 2 && arguments.front() == "-i") {
        if (const auto text = tool::ProbeText(arguments.back())) {
            std::fwrite(text->data(), 1, text->size(), stderr);
            return failed;
        }
    }
    const tool::Request request = tool::ReadRequest(arguments);
    if (request.kind == tool::RequestKind::ListDevices) {
        return PrintListing();
    }
    if (request.kind == tool::RequestKind::Malformed) {
        return Complain(request.error, failed);
    }
    const std::string ffmpeg = tool::FindFfmpeg();
    if (ffmpeg.empty()) {
        return Complain(NoFfmpegReason(), noProgram);
    }
    if (request.kind == tool::RequestKind::Capture) {
        return Record(ffmpeg, arguments, request, recorder);
    }
    return PassOn(ffmpeg, tool::WithoutTornEnds(arguments));
}
