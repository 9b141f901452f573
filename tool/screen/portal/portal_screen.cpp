#include "tool/screen/portal/portal_screen.h"

#include "tool/screen/frame_fitter.h"
#include "tool/screen/portal/cast_stream.h"
#include "tool/screen/portal/portal_process.h"
#include "tool/screen/screen_picture.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tool {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto endedEarly = "The recording was ended before it had begun";
constexpr auto formatPatience = 10s; // measured: 40 to 130 ms
constexpr auto picturePatience = 1s; // from then on; a still screen may bring none

class PortalScreen : public Screen
{
public:
    PortalScreen(std::unique_ptr<PortalProcess> session, std::unique_ptr<CastStream> stream,
                 const Rectangle& area)
        : m_pSession(std::move(session)),
          m_pStream(std::move(stream)),
          m_area(area)
    {
    }

    Outcome Next(SteadyTime until) override;
    void Write(uint8_t* frame) override;
    std::string LostReason() const override
    {
        return "The desktop has ended the sharing of the screen";
    }

private:
    const std::unique_ptr<PortalProcess> m_pSession;
    const std::unique_ptr<CastStream> m_pStream; // ends before the session
    const Rectangle m_area;
    FrameFitter m_fitter;
    uint64_t m_nTaken = 0; // the number of the last picture
    bool m_bFirst = true;
};

bool IsReady(int descriptor)
{
    pollfd event{descriptor, POLLIN, 0};
    return poll(&event, 1, 0) > 0;
}

Screen::Outcome PortalScreen::Next(SteadyTime /*until*/)
{
    m_pStream->Work();
    if (m_pStream->IsLost() || IsReady(m_pSession->Number())) {
        return Outcome::Lost;
    }
    const bool isNew = m_pStream->Count() != m_nTaken;
    if (!m_pStream->Picture() && !m_bFirst) {
        return Outcome::Waiting; // the desktop is changing the format
    }
    m_nTaken = m_pStream->Count();
    return std::exchange(m_bFirst, false) || isNew ? Outcome::Taken : Outcome::Unchanged;
}

void PortalScreen::Write(uint8_t* frame)
{
    if (m_pStream->Picture()) {
        m_fitter.Write(*m_pStream->Picture(), frame, m_area.width, m_area.height);
    } else {
        ConvertToYuv({}, frame, m_area.width, m_area.height); // black
    }
}

// Waits for the person. Returns false if the recording is to end.
bool AwaitReport(const PortalProcess& session, const WaitForScreen& wait)
{
    pollfd event{session.Number(), POLLIN, 0};
    while (event.revents == 0) {
        if (!wait(event, Clock::now() + 1h)) {
            return false;
        }
    }
    return true;
}

// Waits for the first picture. Returns false if the recording is to end.
bool AwaitPicture(CastStream& stream, const WaitForScreen& wait)
{
    SteadyTime end = Clock::now() + formatPatience;
    while (!stream.Picture() && !stream.IsLost() && Clock::now() < end) {
        pollfd event{stream.Number(), POLLIN, 0};
        if (!wait(event, end)) {
            return false;
        }
        const bool hadFormat = stream.Format().has_value();
        stream.Work();
        if (!hadFormat && stream.Format()) {
            end = Clock::now() + picturePatience;
        }
    }
    return true;
}

// The size of the pictures when they are upright. Before the first one it is not known whether they
// are turned; then the monitor in the list is taken for the one that was chosen, if it may be.
Rectangle FrameSize(const CastStream& stream, const Rectangle& listed)
{
    const auto& picture = stream.Picture();
    if (picture) {
        return EvenSized(UprightSize(picture->width, picture->height, picture->transform));
    }
    const int width = stream.Format()->width;
    const int height = stream.Format()->height;
    const bool isTurned = width == listed.height && height == listed.width;
    return EvenSized({0, 0, isTurned ? height : width, isTurned ? width : height});
}

} // namespace

OpenedScreen OpenPortalScreen(const Rectangle& area, const WaitForScreen& wait)
{
    if (PipeWire() == nullptr) {
        return {nullptr, area, "No screen can be recorded: libpipewire-0.3.so.0 is not installed"};
    }
    auto session = PortalProcess::Start(area);
    if (!session) {
        return {nullptr, area, "No screen can be recorded: no process can be started"};
    }
    if (!AwaitReport(*session, wait)) {
        return {nullptr, area, endedEarly};
    }
    PortalReport report = session->Read();
    if (!report.pipewire.IsOpen()) {
        return {nullptr, area, report.reason};
    }
    auto stream = CastStream::Open(std::move(report.pipewire), report.node);
    if (stream && !AwaitPicture(*stream, wait)) {
        return {nullptr, area, endedEarly};
    }
    if (!stream || stream->IsLost() || !stream->Format()) {
        return {nullptr, area, "No screen can be recorded: the desktop sends no pictures"};
    }
    const Rectangle size = FrameSize(*stream, area);
    if (size.width < 2 || size.height < 2) {
        return {nullptr, area, "No screen can be recorded: the chosen one is too small"};
    }
    return {std::make_unique<PortalScreen>(std::move(session), std::move(stream), size), size, {}};
}

} // namespace tool
