// Supplies ffmpeg with pictures of the screen, at the frame rate and in the pixel format of the
// recording. Converting them takes ffmpeg several times as long.
#pragma once

#include "tool/capture/recording_time.h"
#include "tool/feed/picture_clock.h"
#include "tool/feed/picture_pipe.h"
#include "tool/screen/rectangle.h"
#include "tool/screen/screen.h"

#include <memory>
#include <string>

namespace tool {

class ScreenFeeder
{
public:
    // `area`: that of the screen. `pipe`: where `skippedBytes` meaningless bytes and then
    // yuv420p frames are written; closed with this object. `time`: begins with the first frame.
    ScreenFeeder(std::unique_ptr<Screen> screen, const Rectangle& area, PictureRate rate,
                 Descriptor pipe, RecordingTime& time);

    // Takes the first picture, which is used if there is no other at the start. Returns false if
    // the screen cannot be grabbed.
    bool Prepare();
    // Why Prepare() has failed or Run() has met the end of the screen, as Screen::LostReason().
    const std::string& LostReason() const { return m_lostReason; }

    // Delivers all pictures up to `time`'s end, but at least two, without which no file plays.
    // Returns then, or when nobody reads any more. If the screen disappears, that is the end.
    void Run();

private:
    bool WaitForReader() const;
    bool Convert();
    bool IsWanted(int64_t place) const;
    bool WorkUntilDue(int64_t place);
    bool Fill();

    std::unique_ptr<Screen> m_pScreen;
    PictureRate m_rate;
    RecordingTime& m_time;
    PicturePipe m_pictures;
    PictureClock m_clock;
    int64_t m_nNext = 0; // the first place without a picture
    std::string m_lostReason;
    bool m_bUnwritten = false; // there was no room for the last picture
};

} // namespace tool
