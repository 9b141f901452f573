// What the fuzz targets share.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// One run of a target: anything may stand in `data`. Ends the process where something is wrong.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size); // NOLINT: its fixed name

// Ends the process with this sentence and the place where it was asked.
#define Require(condition, sentence)                                                               \
    ((condition) ? void() : RequirementFailed(#condition, sentence, __FILE__, __LINE__))

[[noreturn]] void RequirementFailed(const char* condition, const std::string& sentence,
                                    const char* file, int line);

std::string TextOf(const uint8_t* data, size_t size);

// As the recorder reads what `tool` prints: Latin-1 up to the first zero byte.
QString ToolTextOf(const uint8_t* data, size_t size);

// The text's lines. A zero byte ends a line's word: no argument of a program holds one.
std::vector<std::string> LinesOf(const std::string& text);

// A file of this name in a folder that goes with the process.
class ScratchFile
{
public:
    explicit ScratchFile(const std::string& name);
    const std::string& Path() const { return m_path; }
    // With this content and no other.
    void Write(const uint8_t* data, size_t size) const;
    QByteArray Read() const;
    void Remove() const;

private:
    std::string m_path;
};
