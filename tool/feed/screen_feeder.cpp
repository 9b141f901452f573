#include "tool/feed/screen_feeder.h"

#include "tool/feed/fed_inputs.h"
#include "tool/screen/screen_picture.h"
#include "tool/system/pipe.h"

#include <algorithm>
#include <array>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Outcome = Screen::Outcome;

constexpr auto firstPatience = 1s; // for the server's first picture; measured: 6 ms
constexpr auto endPatience = 50ms; // until the end of the recording is noticed
constexpr int64_t fewestPictures = 2;

} // namespace

ScreenFeeder::ScreenFeeder(std::unique_ptr<Screen> screen, const Rectangle& area, PictureRate rate,
                           Descriptor pipe, RecordingTime& time)
    : m_pScreen(std::move(screen)),
      m_rate(rate),
      m_time(time),
      m_pictures(std::move(pipe), YuvBytes(area.width, area.height)),
      m_clock(rate, {})
{
}

bool ScreenFeeder::Prepare()
{
    if (m_pScreen->Next(Clock::now() + firstPatience) != Outcome::Taken || !Convert()) {
        m_lostReason = m_pScreen->LostReason();
        return false;
    }
    m_pictures.Add(0);
    return true;
}

void ScreenFeeder::Run()
{
    if (!WaitForReader()) {
        return;
    }
    const SteadyTime start = Clock::now();
    m_clock = PictureClock(m_rate, start);
    m_time.Begin(start);
    while (IsWanted(m_nNext)) {
        if (!WorkUntilDue(m_nNext)) {
            return;
        }
        if (IsWanted(m_nNext) && !Fill()) {
            break;
        }
    }
    m_time.Finish(Clock::now()); // if the screen is gone
    while (m_pictures.HasWork() && m_pictures.Work(Clock::now() + 10ms)) {
    }
}

// Waits until ffmpeg opens the pipe and reads the skipped bytes. The recording starts at that
// moment; frames grabbed earlier would have to be buffered. Returns false if ffmpeg is gone.
bool ScreenFeeder::WaitForReader() const
{
    const std::array<char, skippedBytes> nothing{};
    if (write(m_pictures.Outlet().Number(), nothing.data(), nothing.size()) != skippedBytes) {
        return false;
    }
    auto unread = UnreadBytes(m_pictures.Outlet());
    while (unread == nothing.size()) {
        std::this_thread::sleep_for(1ms);
        unread = UnreadBytes(m_pictures.Outlet());
    }
    return unread.has_value();
}

// Returns false if there is no room for the frame.
bool ScreenFeeder::Convert()
{
    uint8_t* picture = m_pictures.Blank();
    if (picture != nullptr) {
        m_pScreen->Write(picture);
    }
    return picture != nullptr;
}

bool ScreenFeeder::IsWanted(int64_t place) const
{
    const auto end = m_time.End();
    return place < fewestPictures || !end || m_clock.Due(place) < *end;
}

// Passes frames on until this one is due, or at once if the recording ends. Returns false if ffmpeg
// is gone.
bool ScreenFeeder::WorkUntilDue(int64_t place)
{
    const SteadyTime due = m_clock.Due(place);
    do {
        if (!m_pictures.Work(std::min(due, Clock::now() + endPatience))) {
            return false;
        }
    } while (Clock::now() < due && !m_time.End());
    return true;
}

// Fills the due place with a new frame, and missed places before it with the previous one. Returns
// false if the screen is gone.
bool ScreenFeeder::Fill()
{
    const SteadyTime now = Clock::now();
    const int64_t place = m_clock.PlaceAt(std::min(now, m_time.End().value_or(now)), m_nNext);
    const Outcome outcome = m_pScreen->Next(m_clock.Due(place + 1));
    m_pictures.Repeat(place - m_nNext);
    if (outcome == Outcome::Lost) {
        m_lostReason = m_pScreen->LostReason();
        return false;
    }
    m_bUnwritten = m_bUnwritten || outcome == Outcome::Taken;
    if (m_bUnwritten && outcome != Outcome::Waiting && Convert()) {
        m_pictures.Add();
        m_bUnwritten = false;
    } else {
        m_pictures.Repeat(1);
    }
    m_nNext = place + 1;
    return true;
}

} // namespace tool
