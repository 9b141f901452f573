// Supplies ffmpeg with sound. ffmpeg could open the sources itself but would wait for each of them:
// seconds for an idle one, forever for one that is gone. The feeder never blocks it and writes
// silence where there is no sound.
#pragma once

#include "tool/capture/recording_time.h"
#include "tool/system/descriptor.h"

#include <memory>
#include <string>
#include <vector>

namespace tool {

struct SoundPlan
{
    std::vector<std::string> sources; // the sound server's names; mixed into one track
    int rate = 48000;                 // sample frames per second
};

class SoundFeeder
{
public:
    // `pipe`: where s16le stereo is written. The sound counts from `time`'s start, or from the
    // moment the pipe is read if that comes first, as it does when ffmpeg grabs the screen itself.
    SoundFeeder(const SoundPlan& plan, Descriptor pipe, const RecordingTime& time);
    SoundFeeder(const SoundFeeder&) = delete;
    SoundFeeder& operator=(const SoundFeeder&) = delete;
    ~SoundFeeder(); // closes the pipe

    // Delivers all sound up to `time`'s end. Returns then, or when nobody reads any more.
    void Run();

private:
    struct Private;
    std::unique_ptr<Private> m_p;
};

} // namespace tool
