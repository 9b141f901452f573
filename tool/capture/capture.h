// Where the pictures and the sound of a recording come from, on any platform.
#pragma once

#include "tool/capture/recording_time.h"
#include "tool/command/command.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace tool {

// What ffmpeg reads for a recording.
struct CaptureInputs
{
    std::vector<Arguments> inputs;     // options, "-i" and name of each; the first has the pictures
    std::vector<size_t> sounds;        // the inputs with sound, which become one track
    std::string pictureFilter;         // what the pictures need; empty: nothing
    std::string soundFilter;           // what each sound needs; empty: what -async asks for
    std::vector<int> descriptors = {}; // those that the names refer to
};

// The source of one recording. ffmpeg runs between Feed() and End().
class Capture
{
public:
    Capture() = default;
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;
    virtual ~Capture() = default;

    virtual CaptureInputs Inputs() const = 0;

    // Whether ffmpeg takes the pictures itself. It is then ended by a key; otherwise by the end of
    // its inputs.
    virtual bool GrabsItself() const = 0;

    // ffmpeg has been started with copies of the descriptors: closes them here, and starts the
    // threads that write to their other ends.
    virtual std::vector<std::thread> Feed() { return {}; }

    // ffmpeg has ended: nothing more is fed to it.
    virtual void End() {}

    // How long the first picture may take. Zero: for ever.
    virtual std::chrono::milliseconds FirstPicturePatience() const { return {}; }

    // There was no picture: what the user can do about it, as a sentence without its full stop.
    // Empty if that is not known. `late`: the patience was over; otherwise ffmpeg has failed. May
    // take some seconds.
    virtual std::string NoPictureReason(bool /*late*/) const { return {}; }
};

// Each platform defines these two functions.

// Prints the list of screens and sound devices on standard error, and remembers which number stands
// for which device. Returns the exit code, 1 as ffmpeg's. `ffmpeg`: its path, or empty.
int PrintListing(const std::string& ffmpeg);

// Prepares a recording with this ffmpeg. `time`: begins with the first picture, if that moment is
// known, and ends the feeding. Returns nothing, after a message, if something cannot be recorded.
std::unique_ptr<Capture> OpenCapture(const std::string& ffmpeg, const Record& record,
                                     RecordingTime& time);

} // namespace tool
