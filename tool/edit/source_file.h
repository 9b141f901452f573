// A movie opened for a join.
#pragma once

#include "tool/system/descriptor.h"
#include "tool/system/file_identity.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

// ffmpeg reads the movie through this descriptor: its name can contain anything, and it can be
// renamed or removed meanwhile.
struct SourceFile
{
    Descriptor file;
    FileIdentity identity;
    // How much of it is read, in bytes: an interrupted recording is read up to its last complete
    // fragment. ffmpeg refuses such a file or complains at its end.
    uint64_t size = 0;

    // The path under which a child process that inherits the descriptor, and this one, opens it. On
    // macOS all that open it share one place in the file. ffmpeg goes to the beginning of what it
    // opens, so it may be opened again, but not by two at the same time.
    std::string Path() const { return "/dev/fd/" + std::to_string(file.Number()); }
    // The same as a URL of ffmpeg's, for as much as is read.
    std::string Url() const;
};

// The descriptor is inherited by programs. Returns nothing, with errno, if there is no such regular
// file that can be read.
std::optional<SourceFile> OpenSource(const std::string& path);

// Why a file cannot be used, in words that tell the recorder that the job has failed.
std::string OpenFault(int error);

} // namespace tool
