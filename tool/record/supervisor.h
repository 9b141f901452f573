// Watches ffmpeg while it records, and ends the recording when that is asked for.
#pragma once

#include "tool/capture/recording_time.h"
#include "tool/record/recording_file.h"
#include "tool/system/descriptor.h"
#include "tool/system/keyboard.h"
#include "tool/system/process.h"
#include "tool/system/signals.h"

#include <chrono>
#include <string>

namespace tool {

// What ends with the recording.
struct Supervised
{
    Process ffmpeg;
    Descriptor keys;           // ffmpeg's standard input
    const RecordingFile* file; // null if ffmpeg has opened another one itself
    bool grabsItself;          // ffmpeg takes the pictures, and ends by a key only
    // How long ffmpeg may take from there to its end. It has read all its inputs long before:
    // within 0.1 s, up to 4 s on a busy machine. If it grabs itself, it is killed when the file has
    // not grown for so long after the key: it may wait for a device that is gone.
    std::chrono::milliseconds patience = std::chrono::seconds(20);
    // How long the first picture may take to reach the file. Zero: for ever.
    std::chrono::milliseconds firstPicture = std::chrono::milliseconds(0);
};

// Why a recording has ended.
enum class Ending {
    Asked,     // that was asked for
    ByItself,  // ffmpeg has ended
    NoPicture, // none came in time, and ffmpeg was killed
};

class Supervisor
{
public:
    // `time`: finished when "q" is typed, the keyboard is a pipe that ends, one of the signals
    // comes, or SIGHUP is pending for ffmpeg. Keys before the "q" are passed on to ffmpeg.
    Supervisor(Supervised supervised, int keyboard, Signals& caught, RecordingTime& time);

    // Returns ffmpeg's exit code when it has ended.
    int Run();
    // What has ended it first, after Run().
    Ending Reason() const { return m_ending; }

private:
    void Wait();
    void ReadKeys();
    void ReadSignals();
    void QuitIfNeeded();
    void KillWithoutPicture();
    void KillWithoutProgress();
    void Type(const std::string& keys) const;

    Supervised m_supervised;
    Keyboard m_keyboard;
    Signals& m_caught;
    RecordingTime& m_time;
    bool m_bQuit = false; // "q" is typed
    off_t m_nSize = 0;    // of the file, since then
    SteadyTime m_grown;   // when it has last grown
    SteadyTime m_start = SteadyTime::clock::now();
    Ending m_ending = Ending::ByItself;
};

} // namespace tool
