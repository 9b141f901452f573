#include "tool/edit/part_note.h"

#include "tool/system/descriptor.h"

#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tool {
namespace {

// A zero byte ends each field: the only byte that no path contains.
constexpr char fieldEnd = '\0';
constexpr std::string_view title = "lumenfold part 1";
constexpr std::string_view lastField = "end"; // a note that was cut off has none

// More than the longest path and five numbers take.
constexpr size_t longestNote = 16384;

// Takes the next field from the text. Returns nothing if it has no end.
std::optional<std::string_view> TakeField(std::string_view& text)
{
    const size_t end = text.find(fieldEnd);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view field = text.substr(0, end);
    text.remove_prefix(end + 1);
    return field;
}

template <typename Number>
bool TakeNumber(std::string_view& text, Number& number)
{
    const auto field = TakeField(text);
    if (!field) {
        return false;
    }
    const char* end = field->data() + field->size();
    const auto result = std::from_chars(field->data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

bool WriteAll(int file, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(written > 0 ? static_cast<size_t>(written) : 0);
    }
    return true;
}

} // namespace

std::string NoteText(const PartNote& note)
{
    const FileIdentity& identity = note.identity;
    std::string text;
    for (const std::string& field :
         {std::string(title), std::to_string(identity.device), std::to_string(identity.number),
          std::to_string(identity.size), std::to_string(identity.seconds),
          std::to_string(identity.nanoseconds), note.source, std::string(lastField)}) {
        text.append(field).append(1, fieldEnd);
    }
    return text;
}

std::optional<PartNote> ParseNote(std::string_view text)
{
    PartNote note;
    FileIdentity& identity = note.identity;
    if (TakeField(text) != title || !TakeNumber(text, identity.device) ||
        !TakeNumber(text, identity.number) || !TakeNumber(text, identity.size) ||
        !TakeNumber(text, identity.seconds) || !TakeNumber(text, identity.nanoseconds)) {
        return std::nullopt;
    }
    note.source = TakeField(text).value_or(std::string_view());
    const bool complete = note.source.starts_with('/') && TakeField(text) == lastField;
    return complete && text.empty() ? std::optional(note) : std::nullopt;
}

std::optional<PartNote> ReadNote(const std::string& path)
{
    // Opening a pipe must not wait for a writer.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.IsOpen()) {
        return std::nullopt;
    }
    std::string text(longestNote, '\0');
    const ssize_t size =
        IdentityOf(file.Number()) ? read(file.Number(), text.data(), text.size()) : 0;
    text.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return ParseNote(text).value_or(PartNote());
}

bool WriteNote(const std::string& path, const PartNote& note)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) {
        return false;
    }
    const bool written = WriteAll(file, NoteText(note));
    const int fault = errno;
    if (close(file) == 0 && written) {
        return true;
    }
    const int cause = written ? errno : fault; // some disks tell only now that they are full
    unlink(path.c_str());
    errno = cause;
    return false;
}

} // namespace tool
