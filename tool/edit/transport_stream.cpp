#include "tool/edit/transport_stream.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <span>

namespace tool {
namespace {

using Bytes = std::span<const uint8_t>;

constexpr size_t packetSize = 188;

// Twenty seconds of a very large recording. The first second has everything needed here.
constexpr size_t mostPackets = 100000;
constexpr size_t packetsAtOnce = 500;

// The parameter sets come before the first slice.
constexpr size_t enoughPicture = 16384;

constexpr uint8_t h264 = 0x1b;
constexpr uint8_t h265 = 0x24;
constexpr uint8_t aac = 0x0f;

unsigned Number(Bytes bytes, size_t at)
{
    return static_cast<unsigned>(bytes[at]) << 8U | bytes[at + 1];
}

class StreamReader
{
public:
    // Reads one packet. Returns false if it is not a valid one.
    bool Take(Bytes packet);
    std::optional<StreamShape> Shape() const;
    bool IsComplete() const { return m_complete; }

private:
    struct Track
    {
        unsigned id = 0;
        uint8_t type = 0;
        bool begun = false;
        bool whole = false;
        std::vector<uint8_t> bytes;
    };

    void ReadPrograms(Bytes table);
    void ReadTracks(Bytes table);
    void Collect(Track& track, Bytes payload, bool begins);

    unsigned m_tableId = 0;
    bool m_odd = false;
    bool m_complete = false;
    Track m_picture;
    Track m_sound;
};

// The payload starts with a pointer to the table.
Bytes TableIn(Bytes payload)
{
    if (payload.empty() || payload[0] + 4U > payload.size()) {
        return {};
    }
    const Bytes table = payload.subspan(payload[0] + 1U);
    const size_t size = 3 + (Number(table, 1) & 0xfffU);
    return size <= table.size() && size >= 12 ? table.first(size - 4) : Bytes();
}

void StreamReader::ReadPrograms(Bytes table)
{
    if (table.size() >= 12 && table[0] == 0) {
        m_tableId = Number(table, 10) & 0x1fffU;
    }
}

void StreamReader::ReadTracks(Bytes table)
{
    if (table.size() < 12 || table[0] != 2 || m_picture.id != 0 || m_sound.id != 0) {
        return;
    }
    size_t at = 12 + (Number(table, 10) & 0xfffU);
    while (at + 5 <= table.size()) {
        const uint8_t type = table[at];
        const bool isPicture = type == h264 || type == h265;
        Track& track = isPicture ? m_picture : m_sound;
        m_odd = m_odd || (!isPicture && type != aac) || track.id != 0;
        track.type = type;
        track.id = Number(table, at + 1) & 0x1fffU;
        at += 5 + (Number(table, at + 3) & 0xfffU);
    }
}

void StreamReader::Collect(Track& track, Bytes payload, bool begins)
{
    if (track.whole || (!track.begun && !begins)) {
        return;
    }
    if (begins && track.begun) {
        track.whole = true;
        return;
    }
    if (begins) {
        // Nine bytes; the last one is the number of header bytes that follow.
        if (payload.size() < 9 || payload.size() < 9U + payload[8]) {
            return;
        }
        payload = payload.subspan(9U + payload[8]);
        track.begun = true;
    }
    track.bytes.insert(track.bytes.end(), payload.begin(), payload.end());
    track.whole = track.bytes.size() >= (track.type == aac ? 4 : enoughPicture);
}

bool StreamReader::Take(Bytes packet)
{
    if (packet[0] != 0x47) {
        return false;
    }
    const bool begins = (packet[1] & 0x40U) != 0;
    const unsigned id = Number(packet, 1) & 0x1fffU;
    const bool hasField = (packet[3] & 0x20U) != 0;
    const size_t skip = hasField ? 5U + packet[4] : 4U;
    if ((packet[3] & 0x10U) == 0 || skip >= packet.size()) {
        return true;
    }
    const Bytes payload = packet.subspan(skip);
    if (id == 0 && begins) {
        ReadPrograms(TableIn(payload));
    } else if (id == m_tableId && id != 0 && begins) {
        ReadTracks(TableIn(payload));
    } else if (id != 0 && id == m_picture.id) {
        Collect(m_picture, payload, begins);
    } else if (id != 0 && id == m_sound.id) {
        Collect(m_sound, payload, begins);
    }
    m_complete =
        m_odd || ((m_picture.id != 0 || m_sound.id != 0) &&
                  (m_picture.id == 0 || m_picture.whole) && (m_sound.id == 0 || m_sound.whole));
    return true;
}

bool IsParameterSet(uint8_t type, uint8_t head)
{
    const unsigned unit = type == h264 ? head & 0x1fU : static_cast<unsigned>(head) >> 1U & 0x3fU;
    return type == h264 ? unit == 7 || unit == 8 : unit >= 32 && unit <= 34;
}

// The parameter sets before the first picture. NAL units start with 00 00 01.
std::string ParameterSets(uint8_t type, Bytes bytes)
{
    constexpr std::array<uint8_t, 3> mark = {0, 0, 1};
    std::string found;
    auto unit = std::search(bytes.begin(), bytes.end(), mark.begin(), mark.end());
    while (bytes.end() - unit > 3) {
        unit += 3;
        const auto next = std::search(unit, bytes.end(), mark.begin(), mark.end());
        if (IsParameterSet(type, *unit) && next != bytes.end()) {
            found.append(mark.begin(), mark.end());
            found.append(unit, next);
            while (found.back() == '\0') {
                found.pop_back(); // leading zero of the next start code
            }
        }
        unit = next;
    }
    return found;
}

std::optional<StreamShape> StreamReader::Shape() const
{
    StreamShape shape;
    if (m_odd || (m_picture.id == 0 && m_sound.id == 0)) {
        return std::nullopt;
    }
    if (m_picture.id != 0) {
        shape.pictureType = m_picture.type;
        shape.parameterSets = ParameterSets(m_picture.type, m_picture.bytes);
        if (shape.parameterSets.empty()) {
            return std::nullopt;
        }
    }
    if (m_sound.id != 0) {
        const auto& bytes = m_sound.bytes;
        if (bytes.size() < 4 || (Number(bytes, 0) & 0xfff6U) != 0xfff0U) {
            return std::nullopt;
        }
        // Profile, sample rate and channels, without the private bit between them.
        shape.soundType = m_sound.type;
        shape.soundHeader = static_cast<uint16_t>(Number(bytes, 2) & 0xfdc0U);
        if ((shape.soundHeader & 0x01c0U) == 0) {
            return std::nullopt; // the channel layout is in the stream itself
        }
    }
    return shape;
}

} // namespace

std::optional<StreamShape> ReadTransportStream(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    StreamReader reader;
    std::vector<char> block(packetSize * packetsAtOnce);
    for (size_t i = 0; i < mostPackets / packetsAtOnce && stream && !reader.IsComplete(); ++i) {
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        Bytes packets(reinterpret_cast<const uint8_t*>(block.data()),
                      static_cast<size_t>(stream.gcount()));
        for (; packets.size() >= packetSize && !reader.IsComplete();
             packets = packets.subspan(packetSize)) {
            if (!reader.Take(packets.first(packetSize))) {
                return std::nullopt;
            }
        }
    }
    return reader.Shape();
}

bool FitTogether(const std::vector<std::string>& paths)
{
    std::optional<StreamShape> first;
    for (const std::string& path : paths) {
        const auto shape = ReadTransportStream(path);
        if (!shape || (first && *shape != *first)) {
            return false;
        }
        first = shape;
    }
    return true;
}

} // namespace tool
