// The process that supplies ffmpeg with sound. ffmpeg could open the sources itself but would wait
// for each of them: seconds for an idle one, forever for one that is gone. This process never
// blocks it and writes silence where there is no sound.
#pragma once

#include "tool/record/recording_start.h"

#include <string>
#include <vector>

namespace tool {

struct FeederPlan
{
    std::vector<std::string> sources; // the sound server's names; mixed into one track
    int rate = 48000;                 // sample frames per second
    RecordingStart* start = nullptr;  // of the pictures, if a process beside ffmpeg takes them
};

// Starts it as a child of this process, which then becomes ffmpeg. Returns the descriptor for
// ffmpeg to read s16le stereo from (it survives the exec), or -1 with errno. The child exits when
// the pipe is closed or the frames end, and at the latest with this process.
int StartSoundFeeder(const FeederPlan& plan);

} // namespace tool
