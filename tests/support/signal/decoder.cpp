#include "tests/support/signal/decoder.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int cell = 16;
constexpr int cells = 16;
constexpr int stripWidth = (cells + 2) * cell;
constexpr int stripHeight = 2 * cell;

// The mean brightness of the inside of a square, away from its blurred edges.
int Brightness(const unsigned char* strip, int x, int size)
{
    int sum = 0;
    for (int row = size / 4; row < size * 3 / 4; ++row) {
        for (int column = size / 4; column < size * 3 / 4; ++column) {
            sum += strip[row * stripWidth + x + column];
        }
    }
    return sum / (size / 2 * (size / 2));
}

// An empty line follows a frame with side data, as the first one has.
std::string NextLine(std::istream& lines)
{
    std::string line;
    while (line.empty() && std::getline(lines, line)) {
    }
    return line;
}

} // namespace

std::optional<std::string> OutputOf(const std::vector<std::string>& command)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    pid_t child = 0;
    const int failure =
        posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::string output;
    std::array<char, 65536> buffer{};
    for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
        output.append(buffer.data(), static_cast<size_t>(count));
    }
    close(ends[0]);
    int status = 0;
    if (failure != 0 || waitpid(child, &status, 0) != child || status != 0) {
        return std::nullopt;
    }
    return output;
}

std::vector<Picture> DecodePictures(const std::string& file, int x, int y)
{
    const auto times =
        OutputOf({"ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                  "frame=best_effort_timestamp_time", "-of", "csv=p=0", file});
    const std::string crop = "crop=" + std::to_string(stripWidth) + ":" +
                             std::to_string(stripHeight) + ":" + std::to_string(x) + ":" +
                             std::to_string(y);
    const auto bytes =
        OutputOf({"ffmpeg", "-v", "error", "-i", file, "-map", "0:v:0", "-vf", crop, "-vsync",
                  "passthrough", "-pix_fmt", "gray", "-f", "rawvideo", "-"});
    if (!times || !bytes) {
        return {};
    }
    std::vector<Picture> pictures;
    std::istringstream lines(*times);
    constexpr size_t size = size_t{stripWidth} * stripHeight;
    for (size_t at = 0; at + size <= bytes->size(); at += size) {
        const std::string line = NextLine(lines);
        if (line.empty()) {
            break;
        }
        const auto* strip = reinterpret_cast<const unsigned char*>(bytes->data()) + at;
        Picture picture;
        picture.time = std::atof(line.c_str());
        for (int i = 0; i < cells; ++i) {
            picture.number |= Brightness(strip, i * cell, cell) > 127 ? 1 << i : 0;
        }
        picture.flash = Brightness(strip, cells * cell, 2 * cell) > 127;
        pictures.push_back(picture);
    }
    return pictures;
}

std::vector<int16_t> DecodeSound(const std::string& file)
{
    const auto bytes = OutputOf({"ffmpeg", "-v", "quiet", "-i", file, "-map", "0:a:0", "-ac", "1",
                                 "-ar", std::to_string(soundRate), "-f", "s16le", "-"});
    std::vector<int16_t> samples;
    if (bytes) {
        samples.resize(bytes->size() / sizeof(int16_t));
        std::memcpy(samples.data(), bytes->data(), samples.size() * sizeof(int16_t));
    }
    return samples;
}
