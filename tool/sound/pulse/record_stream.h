// A source of the sound server while it is open.
#pragma once

#include "tool/sound/pulse/pulse_library.h"
#include "tool/system/steady_time.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace tool {

class RecordStream
{
public:
    // Receives interleaved stereo samples, and when the first of them was heard.
    using Listener = std::function<void(SteadyTime captured, std::span<const int16_t> stereo)>;

    // Opens the source of this name, at `rate` sample frames per second. `listener` is called by
    // the main loop of `context`. Never fails: ask IsGood().
    RecordStream(const PulseLibrary& pulse, pa_context* context, const std::string& source,
                 uint32_t rate, Listener listener);
    RecordStream(const RecordStream&) = delete;
    RecordStream& operator=(const RecordStream&) = delete;
    ~RecordStream();

    // False once the source could not be opened or is gone.
    bool IsGood() const;

private:
    static void OnRead(pa_stream* stream, size_t bytes, void* data);
    static void OnTiming(pa_stream* stream, void* data);
    void Connect(const std::string& source);
    void Read();
    std::optional<SteadyTime> NextSampleHeard() const;
    bool IsSteady(SteadyTime heard, size_t readable);
    std::chrono::microseconds Duration(int64_t bytes) const;

    const PulseLibrary& m_pulse;
    uint32_t m_nRate;
    Listener m_listener;
    pa_stream* m_pStream;
    std::chrono::microseconds m_delay{}; // from the newest sample's time to its reading
    bool m_bAsked = false;               // the server is about to tell the time
    bool m_bTold = false;                // it just has
};

} // namespace tool
