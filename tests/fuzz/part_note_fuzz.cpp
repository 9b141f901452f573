// A part of a join: a note that a conversion has written, or anything.
#include "tests/fuzz/target.h"
#include "tool/edit/part_note.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text = TextOf(data, size);
    const auto note = tool::ParseNote(text);
    if (note) {
        Require(note->source.starts_with('/'), "a source has a full path");
        Require(note->source.find('\0') == std::string::npos, "a path has no zero byte");
        Require(note->source.size() < size, "a path is from the note");
        Require(tool::ParseNote(tool::NoteText(*note)) == note, "a note is read as it was written");
        Require(!tool::ParseNote(std::string_view(text).substr(0, text.size() - 1)),
                "a note that was cut off is none");
    }
    static const ScratchFile file("1.ts");
    file.Write(data, size);
    const auto read = tool::ReadNote(file.Path());
    Require(read && (read->source.empty() || read == note), "a file is read like its content");
    return 0;
}
