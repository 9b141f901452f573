// Shared by the fuzz targets.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Runs the target once on `data`, which can be anything. Ends the process on an error.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size); // NOLINT: its fixed name

// Ends the process with this message and the location.
#define Require(condition, sentence)                                                               \
    ((condition) ? void() : RequirementFailed(#condition, sentence, __FILE__, __LINE__))

[[noreturn]] void RequirementFailed(const char* condition, const std::string& sentence,
                                    const char* file, int line);

std::string TextOf(const uint8_t* data, size_t size);

// Reads output like the recorder: Latin-1 up to the first zero byte.
QString ToolTextOf(const uint8_t* data, size_t size);

// The lines of the text. A zero byte ends a line, because arguments cannot contain one.
std::vector<std::string> LinesOf(const std::string& text);

// A file of this name in a folder that is deleted with the process.
class ScratchFile
{
public:
    explicit ScratchFile(const std::string& name);
    const std::string& Path() const { return m_path; }
    // Replaces the content.
    void Write(const uint8_t* data, size_t size) const;
    QByteArray Read() const;
    void Remove() const;

private:
    std::string m_path;
};
