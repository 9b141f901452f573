// The recorder's command lines as values: the capture interface of ffmpeg on macOS, trims and
// joins. Pure functions: nothing here looks at the machine.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace tool {

// The arguments of a program, without its name.
using Arguments = std::vector<std::string>;

// The list of capture devices.
struct List
{
};

// The duration of a file.
struct Probe
{
    std::string file;
};

// A recording of one screen, with the sound of any number of devices. Indices count from 0.
struct Record
{
    int screen = 0;
    std::vector<int> sounds; // in the order of the inputs, each once
    Arguments before;        // options and inputs before the screen's
    Arguments after;         // inputs after it that are no captures
    Arguments output;        // the output's options
    std::string file;
    std::string rate = "30"; // frames per second, as the command says it: "29.97", "30000/1001"
    std::string captureRate = "30"; // likewise, but of the capture
    int sampleRate = 48000;         // 8000 to 192000
    bool isYuv420 = false;          // the pixel format asked for
    bool fragmented = false;        // an .mp4, and no option says how it is to be written
};

// A copy of a part of a movie.
struct Cut
{
    std::string source;
    int64_t start = 0;  // seconds
    int64_t length = 0; // seconds; the recorder checks neither
    std::string destination;
};

// The preparation of a movie for a join.
struct Convert
{
    std::string source;
    std::string destination; // the intermediate
};

// A movie made of intermediates, one after another.
struct Join
{
    std::string list; // their names, each followed by "|", which a name can contain too
    std::string destination;
};

// Any other command: for ffmpeg, with the options renamed that current ffmpegs refuse.
struct PassOn
{
    Arguments arguments;
};

// A capture that names no device.
struct Malformed
{
    std::string error; // one sentence without its full stop
};

using Command = std::variant<List, Probe, Record, Cut, Convert, Join, PassOn, Malformed>;

Command ReadCommand(const Arguments& arguments);

} // namespace tool
