#pragma once

#include <string>
#include <vector>

namespace tool {

// Stands for the monitor of whichever output is the default, in place of a source's name. The
// servers know it by this name too, but do not follow it once it is open.
inline constexpr const char* computerSounds = "@DEFAULT_MONITOR@";

// A source of the sound server.
struct SoundSource
{
    std::string name;        // the server's name
    std::string description; // the name for people
    std::string monitorOf;   // the output it monitors; empty for a microphone or line input
};

struct SoundServer
{
    std::vector<SoundSource> sources;
    std::string defaultSource;
    std::string defaultSink;
};

} // namespace tool
