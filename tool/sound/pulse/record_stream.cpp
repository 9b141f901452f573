#include "tool/sound/pulse/record_stream.h"

#include <chrono>
#include <utility>

namespace tool {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;

constexpr uint32_t fragmentsPerSecond = 25; // servers deliver half-size pieces
constexpr uint32_t frameBytes = 2 * sizeof(int16_t);
// Pieces come this much sooner or later than the one before without arousing suspicion.
constexpr microseconds usualJitter = 25ms;

// The library's times are those of the wall clock.
SteadyTime Steady(const timeval& moment)
{
    const auto since = std::chrono::seconds(moment.tv_sec) + microseconds(moment.tv_usec);
    return SteadyTime::clock::now() -
           std::chrono::duration_cast<microseconds>(
               std::chrono::system_clock::now().time_since_epoch() - since);
}

} // namespace

RecordStream::RecordStream(const PulseLibrary& pulse, pa_context* context,
                           const std::string& source, uint32_t rate, Listener listener)
    : m_pulse(pulse),
      m_nRate(rate),
      m_listener(std::move(listener))
{
    const pa_sample_spec format{PA_SAMPLE_S16LE, rate, 2};
    m_pStream = m_pulse.streamNew(context, "Recording", &format, nullptr);
    if (m_pStream != nullptr) {
        Connect(source);
    }
}

RecordStream::~RecordStream()
{
    if (m_pStream != nullptr) {
        m_pulse.streamSetReadCallback(m_pStream, nullptr, nullptr);
        m_pulse.streamSetLatencyUpdateCallback(m_pStream, nullptr, nullptr);
        m_pulse.streamDisconnect(m_pStream);
        m_pulse.streamUnref(m_pStream);
    }
}

void RecordStream::Connect(const std::string& source)
{
    m_pulse.streamSetReadCallback(m_pStream, &RecordStream::OnRead, this);
    m_pulse.streamSetLatencyUpdateCallback(m_pStream, &RecordStream::OnTiming, this);
    pa_buffer_attr buffer{};
    buffer.maxlength = static_cast<uint32_t>(-1);
    buffer.fragsize = m_nRate / fragmentsPerSecond * frameBytes;
    // DONT_MOVE: never record a device the user did not choose.
    const auto flags = static_cast<pa_stream_flags_t>(
        PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE | PA_STREAM_DONT_MOVE);
    // A failure shows in the stream's state.
    m_pulse.streamConnectRecord(m_pStream, source.c_str(), &buffer, flags);
}

bool RecordStream::IsGood() const
{
    return m_pStream != nullptr && PA_STREAM_IS_GOOD(m_pulse.streamGetState(m_pStream));
}

void RecordStream::OnRead(pa_stream* /*stream*/, size_t /*bytes*/, void* data)
{
    static_cast<RecordStream*>(data)->Read();
}

// The server has told how far the source is: about once a second, and when asked.
void RecordStream::OnTiming(pa_stream* /*stream*/, void* data)
{
    auto* self = static_cast<RecordStream*>(data);
    self->m_bAsked = false;
    self->m_bTold = true;
    self->Read();
    self->m_bTold = false;
}

void RecordStream::Read()
{
    const size_t readable = m_pulse.streamReadableSize(m_pStream);
    const auto heard = NextSampleHeard();
    if (readable == 0 || !heard || !IsSteady(*heard, readable)) {
        return; // what has come waits until the server tells
    }
    SteadyTime captured = *heard;
    const void* bytes = nullptr;
    size_t size = 0;
    while (m_pulse.streamPeek(m_pStream, &bytes, &size) == 0 && size > 0) {
        if (bytes != nullptr) { // null is a hole, which stays silent
            m_listener(captured, {static_cast<const int16_t*>(bytes), size / sizeof(int16_t)});
        }
        captured += Duration(static_cast<int64_t>(size));
        m_pulse.streamDrop(m_pStream);
    }
}

// When the next sample to read was captured, or for the monitor of an output when it is heard,
// which may be in the future. Nothing if the server has not told yet.
//
// Computed from the positions that the server told last: its clock and ours hardly drift apart
// until it tells again. The library's own interpolation is off by up to two seconds where a source
// starts or stalls, and takes seconds to recover.
std::optional<SteadyTime> RecordStream::NextSampleHeard() const
{
    const pa_timing_info* told = m_pulse.streamGetTimingInfo(m_pStream);
    if (told == nullptr || told->write_index_corrupt != 0 || told->read_index_corrupt != 0) {
        return std::nullopt;
    }
    return Steady(told->timestamp) - microseconds(told->source_usec) +
           microseconds(told->sink_usec) - Duration(told->write_index - told->read_index);
}

// After a stall the positions that were told before are wrong. It shows in a sudden delay, and the
// server is asked for the new ones.
bool RecordStream::IsSteady(SteadyTime heard, size_t readable)
{
    const auto delay = std::chrono::duration_cast<microseconds>(
        SteadyTime::clock::now() - heard - Duration(static_cast<int64_t>(readable)));
    if (m_bTold || std::chrono::abs(delay - m_delay) <= usualJitter) {
        m_delay = delay;
        return true;
    }
    if (!m_bAsked) {
        pa_operation* asking = m_pulse.streamUpdateTimingInfo(m_pStream, nullptr, nullptr);
        m_bAsked = asking != nullptr;
        if (asking != nullptr) {
            m_pulse.operationUnref(asking);
        }
    }
    return false;
}

microseconds RecordStream::Duration(int64_t bytes) const
{
    return microseconds(bytes / frameBytes * 1000000 / m_nRate);
}

} // namespace tool
