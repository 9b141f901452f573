// The file that a trim or join is written to until it is complete.
#pragma once

#include "tool/system/descriptor.h"

#include <cstdint>
#include <string>

namespace tool {

// Stands beside the destination under its name with ".part" appended, and appears under its own
// name only as a whole. The folder is held open: it may be moved or replaced meanwhile.
class PartFile
{
public:
    // Makes the file. Its name gets a number if somebody has a file of that name. As root, the file
    // is given to the folder's owner. On failure IsOpen() is false and Problem() tells why.
    explicit PartFile(const std::string& destination);

    bool IsOpen() const { return m_file.IsOpen(); }
    const std::string& Problem() const { return m_problem; } // without a full stop
    int File() const { return m_file.Number(); }             // descriptor
    int Folder() const { return m_folder.Number(); }         // descriptor

    // Bytes written so far.
    uint64_t Size() const;
    // The path for a program that inherits File(): independent of names.
    std::string InheritedPath() const;

    // Whether it holds a complete movie: an index and content. Files other than MP4 only have to
    // hold something.
    bool IsMovie() const;
    // Writes everything to the disk. Returns whether that worked.
    bool Sync() const;
    // Gives it the destination's name, or the next free one with a number. Returns the full path,
    // or an empty string after a failure.
    std::string Publish();
    // Deletes it, unless it was published or is somebody else's by now.
    void Remove();

private:
    void Create();
    void GiveToFolderOwner() const;

    std::string m_folderPath; // ends with "/", or empty
    std::string m_name;       // of the destination
    std::string m_part;       // of the file now
    std::string m_problem;
    Descriptor m_folder;
    Descriptor m_file;
};

// The muxer for a file of this name: ffmpeg cannot see it in "NAME.part". MP4 unless the extension
// says otherwise.
std::string MuxerFor(const std::string& path);

// "name (1).mp4": the number goes before the extension. 0 leaves the name as it is.
std::string NumberedName(const std::string& name, int number);

} // namespace tool
