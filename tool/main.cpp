// `tool`: the stock ffmpeg behind the macOS capture interface that the recorder uses. Reads the
// command and hands it to the room that knows how to run it.
//
// Its own exit codes: 1 for a list or a duration (like ffmpeg, which ends both with an error) and
// for what cannot be done; 127 if there is no ffmpeg.
#include "tool/capture/capture.h"
#include "tool/command/command.h"
#include "tool/edit/conversion.h"
#include "tool/edit/cut.h"
#include "tool/edit/join.h"
#include "tool/edit/torn_input.h"
#include "tool/ffmpeg/features.h"
#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/mp4/movie.h"
#include "tool/record/recording.h"
#include "tool/system/complaint.h"
#include "tool/system/process.h"

#include <cstdio>
#include <exception>
#include <string>
#include <unistd.h>
#include <variant>

namespace {

// Runs it with the path of ffmpeg. `complaint`: what to begin with if there is none.
template <typename Run>
int WithFfmpeg(const Run& run, const std::string& complaint = {})
{
    const std::string ffmpeg = tool::FindFfmpeg();
    return ffmpeg.empty() ? tool::Complain(complaint + tool::NoFfmpegReason(), tool::noProgram)
                          : run(ffmpeg);
}

// The recorder takes these words for a failure; without them it would tell success.
template <typename Run>
int EditWithFfmpeg(const Run& run)
{
    return WithFfmpeg(run, "No such file can be made: ");
}

int PassOn(const tool::Arguments& arguments)
{
    return WithFfmpeg([&](const std::string& ffmpeg) {
        return tool::Become(ffmpeg, tool::WithoutTornEnds(arguments));
    });
}

// What each kind of command runs. Returns the exit code.
struct Dispatch
{
    pid_t recorder;

    int operator()(const tool::List& /*list*/) const
    {
        const std::string ffmpeg = tool::FindFfmpeg();
        const int code = tool::PrintListing(ffmpeg);
        // The answer is remembered, so that the first recording does not have to wait for it.
        tool::FeaturesOf(ffmpeg);
        return code;
    }
    int operator()(const tool::Malformed& malformed) const
    {
        return tool::Complain(malformed.error);
    }
    int operator()(const tool::Probe& probe) const
    {
        const auto text = tool::ProbeText(probe.file);
        if (!text) {
            return PassOn({"-i", probe.file});
        }
        std::fwrite(text->data(), 1, text->size(), stderr);
        return tool::failed;
    }
    int operator()(const tool::Record& record) const
    {
        return WithFfmpeg([&](const std::string& ffmpeg) {
            return tool::RunRecording(ffmpeg, record, recorder, tool::OpenCapture);
        });
    }
    int operator()(const tool::Cut& cut) const
    {
        return EditWithFfmpeg([&](const std::string& ffmpeg) { return tool::RunCut(ffmpeg, cut); });
    }
    int operator()(const tool::Convert& convert) const
    {
        return EditWithFfmpeg(
            [&](const std::string& ffmpeg) { return tool::RunConversion(ffmpeg, convert); });
    }
    int operator()(const tool::Join& join) const
    {
        return EditWithFfmpeg(
            [&](const std::string& ffmpeg) { return tool::RunJoin(ffmpeg, join); });
    }
    int operator()(const tool::PassOn& rest) const { return PassOn(rest.arguments); }
};

} // namespace

int main(int count, char** values)
{
    const pid_t recorder = getppid();
    tool::OpenStandardStreams();
    try {
        const tool::Arguments arguments(values + (count > 0 ? 1 : 0), values + count);
        return std::visit(Dispatch{recorder}, tool::ReadCommand(arguments));
    } catch (const std::exception& error) { // no memory is left
        return tool::Complain(error.what());
    }
}
