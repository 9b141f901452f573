// The file of a recording: always a new one, safe on the disk while it grows, an ordinary MP4 in
// the end.
#pragma once

#include "tool/system/descriptor.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace tool {

class RecordingFile
{
public:
    // Creates it. Returns nothing, with errno, if that cannot be done or there is such a file.
    static std::optional<RecordingFile> Create(const std::string& path);

    // A name that leads to this file even when it is moved, for programs that inherit Number().
    std::string Name() const { return "/dev/fd/" + std::to_string(Number()); }
    int Number() const { return m_file.Number(); }

    off_t Size() const; // in bytes
    bool HasContent() const { return Size() > 0; }
    // Puts the name on the disk, or what was written since the last call.
    void SyncName() const;
    void Sync();
    // When nobody writes to it any more: turns it into an ordinary MP4, or removes it if it holds
    // no frame.
    void Finish() const;

private:
    RecordingFile(std::string path, Descriptor file);

    std::string m_path;
    Descriptor m_file;
    off_t m_nSynced = 0;
};

} // namespace tool
