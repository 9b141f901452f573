// What of ffmpeg's output the recorder may see while a job runs.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// The recorder searches each chunk of output for words: "frame=" counts as progress, "Invalid data"
// and "No such file" as failure. ffmpeg writes the first whenever it likes, and the others also
// when it succeeds in the end, for instance after a damaged packet or for a file of that name.
class OutputFilter
{
public:
    // Takes the next bytes of ffmpeg's output. Returns the lines that are complete now, without any
    // of these words: lines with a word of failure are held back.
    std::string Take(std::string_view bytes);

    // For a failed job: an incomplete last line and the lines held back, except those that there
    // was no room for.
    std::string TakeRest();

    // How much of the result is written, in seconds, as far as ffmpeg told.
    double Seconds() const { return m_seconds; }

private:
    std::string Shown(std::string line);

    std::string m_line; // incomplete
    std::string m_held;
    double m_seconds = 0;
};

// Whether the recorder takes this text for a failure.
bool TellsFailure(std::string_view text);

} // namespace tool
