#include "tool/record/supervisor.h"

#include "tool/system/pending_signal.h"
#include "tool/system/pipe.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto usualInterval = 250ms; // for checking ffmpeg's pending signals
constexpr auto quickInterval = 20ms;  // for checking whether ffmpeg may be told to quit
constexpr char quit = 'q';

} // namespace

Supervisor::Supervisor(Supervised supervised, int keyboard, Signals& caught, RecordingTime& time)
    : m_supervised(std::move(supervised)),
      m_keyboard(keyboard),
      m_caught(caught),
      m_time(time)
{
    MakeNonBlocking(m_supervised.keys);
}

int Supervisor::Run()
{
    auto code = m_supervised.ffmpeg.ExitCode();
    while (!code) {
        Wait();
        QuitIfNeeded();
        KillWithoutPicture();
        KillWithoutProgress();
        code = m_supervised.ffmpeg.ExitCode();
    }
    if (m_ending != Ending::NoPicture && m_time.End()) {
        m_ending = Ending::Asked;
    }
    m_time.Finish(Clock::now());
    if (m_supervised.grabsItself) {
        Type({quit}); // for what a script in the place of ffmpeg has started
    }
    return *code;
}

void Supervisor::Wait()
{
    std::array<pollfd, 2> events{
        {{m_keyboard.Number(), POLLIN, 0}, {m_caught.Number(), POLLIN, 0}}};
    const bool mayQuit = m_time.End() && m_supervised.grabsItself && !m_bQuit;
    const std::chrono::milliseconds interval = mayQuit ? quickInterval : usualInterval;
    if (poll(events.data(), events.size(), static_cast<int>(interval.count())) > 0) {
        if (events[0].revents != 0) {
            ReadKeys();
        }
        if (events[1].revents != 0) {
            ReadSignals();
        }
    }
    if (HasPendingSignal(m_supervised.ffmpeg.Id(), SIGHUP)) {
        m_time.Finish(Clock::now());
    }
}

void Supervisor::ReadKeys()
{
    const std::string keys = m_keyboard.Read();
    if (!m_time.End()) {
        Type(keys);
    }
    if (m_keyboard.HasAskedForEnd()) {
        m_time.Finish(Clock::now());
    }
}

void Supervisor::ReadSignals()
{
    while (const auto number = m_caught.Next()) {
        if (*number != SIGCHLD) {
            m_time.Finish(Clock::now());
        }
    }
}

// With pictures and sound from us ffmpeg meets their end. If it takes the pictures itself, it is
// told to quit, but not before the file has one: it looks for keys earlier, and then leaves a file
// that no player opens.
void Supervisor::QuitIfNeeded()
{
    const auto end = m_time.End();
    if (!end || m_bQuit) {
        return;
    }
    const bool hasPicture = m_supervised.file == nullptr || m_supervised.file->HasContent();
    if ((m_supervised.grabsItself && hasPicture) || Clock::now() > *end + m_supervised.patience) {
        m_bQuit = true;
        m_grown = Clock::now();
        Type({quit});
    }
}

// Waiting for a capture device, ffmpeg looks at no keys and no other signals.
void Supervisor::KillWithoutPicture()
{
    const bool late =
        m_supervised.firstPicture.count() > 0 && Clock::now() > m_start + m_supervised.firstPicture;
    if (late && m_ending != Ending::NoPicture && m_supervised.file != nullptr &&
        !m_supervised.file->HasContent()) {
        m_ending = Ending::NoPicture;
        m_supervised.ffmpeg.Signal(SIGKILL);
    }
}

// The file plays up to its last complete fragment.
void Supervisor::KillWithoutProgress()
{
    if (!m_bQuit || !m_supervised.grabsItself || m_supervised.file == nullptr) {
        return;
    }
    const off_t size = m_supervised.file->Size();
    if (size != m_nSize) {
        m_nSize = size;
        m_grown = Clock::now();
    } else if (Clock::now() > m_grown + m_supervised.patience) {
        m_supervised.ffmpeg.Signal(SIGKILL);
    }
}

void Supervisor::Type(const std::string& keys) const
{
    // The pipe has room for far more than anybody types.
    [[maybe_unused]] const ssize_t written =
        write(m_supervised.keys.Number(), keys.data(), keys.size());
}

} // namespace tool
