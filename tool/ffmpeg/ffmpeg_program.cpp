#include "tool/ffmpeg/ffmpeg_program.h"

#include "tool/system/complaint.h"
#include "tool/system/environment.h"
#include "tool/system/own_program.h"
#include "tool/system/pipe.h"
#include "tool/system/process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace tool {

namespace fs = std::filesystem;

bool IsAbsolute(const std::string& path)
{
    return path.starts_with('/');
}

std::vector<std::string> FfmpegPlaces(const std::string& chosen, const std::string& ownDirectory,
                                      const std::string& path, const SearchOrder& order)
{
    std::vector<std::string> places;
    if (!ownDirectory.empty() && (chosen.empty() || order.ownFirst)) {
        places.push_back(ownDirectory + "/ffmpeg");
    }
    if (!chosen.empty()) {
        if (IsAbsolute(chosen)) {
            places.push_back(chosen);
        }
        return places;
    }
    for (size_t at = 0; at <= path.size() && !path.empty();) {
        const size_t colon = std::min(path.find(':', at), path.size());
        const std::string directory = path.substr(at, colon - at);
        if (IsAbsolute(directory)) {
            places.push_back(directory + "/ffmpeg");
        }
        at = colon + 1;
    }
    for (const std::string& folder : order.folders) {
        places.push_back(folder + "/ffmpeg");
    }
    return places;
}

std::string FirstRunnable(const std::vector<std::string>& places)
{
    for (const std::string& place : places) {
        std::error_code error;
        if (fs::is_regular_file(place, error) && access(place.c_str(), X_OK) == 0) {
            return place;
        }
    }
    return {};
}

std::string FindFfmpeg()
{
    return FirstRunnable(FfmpegPlaces(Variable("LUMENFOLD_FFMPEG"),
                                      fs::path(OwnProgram()).parent_path().string(),
                                      Variable("PATH"), PlatformSearchOrder()));
}

std::string NoFfmpegReason()
{
    const std::string chosen = Variable("LUMENFOLD_FFMPEG");
    if (chosen.empty()) {
        return "no ffmpeg is installed: neither beside this program nor in PATH";
    }
    return "LUMENFOLD_FFMPEG names " + chosen +
           (IsAbsolute(chosen) ? ", which is not an executable file"
                               : ", which is not a full path");
}

int Become(const std::string& program, const std::vector<std::string>& arguments)
{
    Become(Program{program, arguments});
    return Complain(program + " cannot be run: " + std::strerror(errno), noProgram);
}

std::string Ask(const std::string& program, const std::vector<std::string>& arguments,
                const AskOptions& options)
{
    auto answer = MakePipe();
    if (!answer) {
        return {};
    }
    Program asked{program, arguments};
    asked.inherited = options.inherited;
    asked.parentEndSignal = SIGKILL;
    const int outlet = answer->write.Number();
    asked.input = Program::nowhere;
    asked.output = options.stream == Stream::Output ? outlet : Program::nowhere;
    asked.error = options.stream == Stream::Error ? outlet : Program::nowhere;
    auto process = Process::Start(asked);
    answer->write.Close();
    std::string text;
    const auto until = std::chrono::steady_clock::now() + options.patience;
    if (process && !ReadAll(answer->read, text, until, options.goesOn)) {
        process->Signal(SIGKILL);
    }
    if (process) {
        process->Wait();
    }
    return text;
}

} // namespace tool
