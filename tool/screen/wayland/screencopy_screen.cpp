#include "tool/screen/wayland/screencopy_screen.h"

#include "tool/screen/frame_fitter.h"
#include "tool/screen/wayland/shared_buffer.h"
#include "tool/screen/wayland/wayland_client.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

struct DestroyFrame
{
    void operator()(zwlr_screencopy_frame_v1* frame) const
    {
        zwlr_screencopy_frame_v1_destroy(frame);
    }
};
using FrameObject = std::unique_ptr<zwlr_screencopy_frame_v1, DestroyFrame>;

// The time in which a compositor that has something new shows it: one and a half of its intervals.
Clock::duration PatienceFor(int refresh)
{
    constexpr std::chrono::milliseconds least{10};
    constexpr std::chrono::milliseconds most{40};
    constexpr std::chrono::milliseconds usual{25};
    constexpr int64_t interval = 1'500'000'000'000; // in ns, for 1 mHz
    const Clock::duration patience = std::chrono::nanoseconds(interval / std::max(refresh, 1));
    return refresh <= 0 ? usual : std::clamp<Clock::duration>(patience, least, most);
}

class ScreencopyScreen : public Screen
{
public:
    ScreencopyScreen(std::unique_ptr<Connection> connection, std::unique_ptr<Outputs> outputs,
                     const Output& output, const Rectangle& area)
        : m_pConnection(std::move(connection)),
          m_pOutputs(std::move(outputs)),
          m_output(output),
          m_area(area)
    {
    }

    Outcome Next(SteadyTime until) override;
    void Write(uint8_t* frame) override;
    std::string LostReason() const override { return m_reason; }

private:
    // Of the frame that was asked for.
    enum class State {
        None,      // nothing is asked for
        Described, // its layout is awaited
        Copied,    // the compositor copies it, when something has changed
        Ready,
    };

    void Ask();
    void NoteLayout(const BufferLayout& layout);
    void Copy();
    void Fail();
    void Finish();
    friend struct FrameEvents;

    // The order matters: objects go before the connection.
    std::unique_ptr<Connection> m_pConnection;
    std::unique_ptr<Outputs> m_pOutputs;
    const Output& m_output;
    const Rectangle m_area;
    std::string m_reason = "No screen can be recorded: the compositor delivers no picture of it";

    FrameObject m_frame;
    State m_state = State::None;
    BufferLayout m_layout;
    bool m_bUpsideDown = false; // what is copied
    // One is filled while the other holds the last picture.
    std::array<std::unique_ptr<SharedBuffer>, 2> m_buffers;
    size_t m_nFilled = 0;
    bool m_bHasPicture = false;
    SourcePicture m_picture; // in the other one
    FrameFitter m_fitter;
};

struct FrameEvents
{
    static ScreencopyScreen& Of(void* data) { return *static_cast<ScreencopyScreen*>(data); }

    static constexpr zwlr_screencopy_frame_v1_listener events{
        [](void* data, zwlr_screencopy_frame_v1* /*frame*/, uint32_t format, uint32_t width,
           uint32_t height, uint32_t stride) {
            Of(data).NoteLayout({format, width, height, stride});
        },
        [](void* data, zwlr_screencopy_frame_v1* /*frame*/, uint32_t flags) {
            Of(data).m_bUpsideDown = (flags & ZWLR_SCREENCOPY_FRAME_V1_FLAGS_Y_INVERT) != 0;
        },
        [](void* data, zwlr_screencopy_frame_v1* /*frame*/, uint32_t /*high*/, uint32_t /*low*/,
           uint32_t /*nanoseconds*/) { Of(data).Finish(); },
        [](void* data, zwlr_screencopy_frame_v1* /*frame*/) { Of(data).Fail(); },
        [](void* /*data*/, zwlr_screencopy_frame_v1* /*frame*/, uint32_t /*x*/, uint32_t /*y*/,
           uint32_t /*width*/, uint32_t /*height*/) {},
        [](void* /*data*/, zwlr_screencopy_frame_v1* /*frame*/, uint32_t /*format*/,
           uint32_t /*width*/, uint32_t /*height*/) {},
        [](void* data, zwlr_screencopy_frame_v1* /*frame*/) { Of(data).Copy(); },
    };
};

// A copy that waits for a change stays asked for: a still screen costs nothing, and what changes is
// there at the next look. After a picture the next is asked for when it is due, so that it is new.
Screen::Outcome ScreencopyScreen::Next(SteadyTime until)
{
    constexpr std::chrono::milliseconds retryInterval{20};
    const bool wasAsked = m_state != State::None;
    SteadyTime end = until;
    if (m_bHasPicture) {
        end =
            wasAsked ? Clock::now() : std::min(until, Clock::now() + PatienceFor(m_output.refresh));
    }
    if (!wasAsked) {
        Ask();
    }
    do {
        const bool pausing = m_state == State::None; // it failed
        if (!m_pConnection->Pump(pausing ? std::min(end, Clock::now() + retryInterval) : end) ||
            m_output.isGone) {
            return Outcome::Lost;
        }
        if (m_state == State::Ready) {
            m_state = State::None;
            return Outcome::Taken;
        }
        if (pausing && !m_bHasPicture) {
            Ask();
        }
    } while (Clock::now() < end);
    return m_bHasPicture ? Outcome::Unchanged : Outcome::Waiting;
}

void ScreencopyScreen::Ask()
{
    constexpr int withPointer = 1;
    m_frame.reset(zwlr_screencopy_manager_v1_capture_output(m_pOutputs->Screencopy(), withPointer,
                                                            m_output.output.get()));
    if (m_frame) {
        zwlr_screencopy_frame_v1_add_listener(m_frame.get(), &FrameEvents::events, this);
        m_state = State::Described;
        m_layout = {};
        m_bUpsideDown = false;
    }
}

void ScreencopyScreen::NoteLayout(const BufferLayout& layout)
{
    m_layout = layout;
    // Before version 3 nothing follows it.
    constexpr uint32_t tellsEnd = 3;
    if (zwlr_screencopy_frame_v1_get_version(m_frame.get()) < tellsEnd) {
        Copy();
    }
}

void ScreencopyScreen::Copy()
{
    if (m_state != State::Described) {
        return;
    }
    auto& buffer = m_buffers.at(m_nFilled);
    if (!buffer || buffer->Layout() != m_layout) {
        buffer = SharedBuffer::Create(m_pOutputs->SharedMemory(), m_layout);
    }
    if (!buffer) {
        if (!m_bHasPicture) {
            m_reason =
                "No screen can be recorded: the compositor delivers pictures of an unknown kind";
        }
        Fail();
        return;
    }
    m_state = State::Copied;
    constexpr uint32_t knowsDamage = 2;
    if (m_bHasPicture && zwlr_screencopy_frame_v1_get_version(m_frame.get()) >= knowsDamage) {
        zwlr_screencopy_frame_v1_copy_with_damage(m_frame.get(), buffer->Buffer());
    } else {
        zwlr_screencopy_frame_v1_copy(m_frame.get(), buffer->Buffer());
    }
}

// As of a monitor that sleeps. The last picture stays.
void ScreencopyScreen::Fail()
{
    m_frame.reset();
    m_state = State::None;
}

void ScreencopyScreen::Finish()
{
    const bool isCopied = m_state == State::Copied;
    Fail();
    if (isCopied) {
        m_state = State::Ready;
        m_reason = "The recorded screen is gone";
        m_picture = m_buffers.at(m_nFilled)->Picture(m_bUpsideDown, m_output.transform);
        m_nFilled = 1 - m_nFilled;
        m_bHasPicture = true;
    }
}

void ScreencopyScreen::Write(uint8_t* frame)
{
    m_fitter.Write(m_picture, frame, m_area.width, m_area.height);
}

} // namespace

std::unique_ptr<Screen> OpenScreencopy(std::unique_ptr<Connection> connection,
                                       std::unique_ptr<Outputs> outputs, const Output& output,
                                       const Rectangle& area)
{
    return std::make_unique<ScreencopyScreen>(std::move(connection), std::move(outputs), output,
                                              area);
}

} // namespace tool
