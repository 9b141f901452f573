#pragma once

#include <string>
#include <vector>

namespace tool {

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
