// `tool`'s translation of arguments: any words, one per line, and the recorder's own commands for
// any file.
#include "jobs/cut_command.h"
#include "jobs/merge_command.h"
#include "jobs/record_command.h"
#include "tests/fuzz/target.h"
#include "tool/command/arguments.h"
#include "tool/edit/conversion.h"
#include "tool/edit/cut.h"
#include "tool/edit/join.h"

#include <QProcess>

#include <algorithm>
#include <charconv>
#include <set>

namespace {

using tool::Arguments;

bool IsRenaming(const std::string& from, const std::string& to)
{
    return (from == "-vbsf" && to == "-bsf:v") || (from == "-absf" && to == "-bsf:a");
}

void CheckPassThrough(const Arguments& arguments)
{
    const Arguments passed = tool::TranslatePassThrough(arguments);
    Require(passed.size() == arguments.size(), "no word is added or lost");
    for (size_t i = 0; i < passed.size(); ++i) {
        Require(passed[i] == arguments[i] || IsRenaming(arguments[i], passed[i]),
                "a word stays as it is: " + arguments[i]);
    }
    Require(tool::TranslatePassThrough(passed) == passed, "once translated it stays");
}

// A word of a capture command that was not in the recorder's, or is composed with one of its words.
bool MayBeNew(const std::string& word, const std::set<std::string>& known)
{
    static const std::set<std::string> own = {"-stats_period",
                                              "0.1",
                                              "-thread_queue_size",
                                              "90",
                                              "1024",
                                              "-f",
                                              "x11grab",
                                              "-framerate",
                                              "30",
                                              "1",
                                              "-video_size",
                                              "1280x800",
                                              "-draw_mouse",
                                              "-grab_x",
                                              "-grab_y",
                                              "100",
                                              "20",
                                              "-i",
                                              ":4",
                                              "-probesize",
                                              "32",
                                              "-ar",
                                              "s16le",
                                              "-ac",
                                              "2",
                                              "/dev/fd/7",
                                              "-analyzeduration",
                                              "-af",
                                              "-vf",
                                              "-g",
                                              "59",
                                              "-flush_packets",
                                              "-bsf:v",
                                              "-bsf:a",
                                              "rawvideo",
                                              "-pixel_format",
                                              "yuv420p",
                                              "-skip_initial_bytes",
                                              "/dev/fd/9",
                                              "-movflags",
                                              "+frag_keyframe+delay_moov+default_base_moof",
                                              "-frag_duration",
                                              "-force_key_frames",
                                              "expr:eq(n,1)"};
    const bool composed = word.starts_with("setpts=") || word.starts_with("aresample=async=");
    const bool number =
        std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; });
    return known.contains(word) || own.contains(word) || composed || number;
}

// ffmpeg takes the last word as its output unless the word before it needs a value. If that is an
// option that is rebuilt, the command has no output before and after.
bool EndsInOutput(const Arguments& arguments)
{
    static const std::set<std::string> rebuilt = {"-i",        "-async", "-vf",
                                                  "-filter:v", "-af",    "-filter:a"};
    return arguments.size() < 2 || !rebuilt.contains(arguments[arguments.size() - 2]);
}

void CheckCapture(const Arguments& arguments, const std::optional<int>& screenPipe,
                  const std::optional<int>& soundPipe)
{
    const tool::CapturePlan plan{":4", {100, 20, 1280, 800}, soundPipe, true, screenPipe};
    const Arguments capture = tool::TranslateCapture(arguments, plan);
    const std::set<std::string> known(arguments.begin(), arguments.end());
    for (const std::string& word : capture) {
        Require(MayBeNew(word, known), "no word is invented: " + word);
    }
    for (size_t i = 0; i + 1 < capture.size(); ++i) {
        Require(capture[i] != "-i" || capture[i + 1] != arguments.back() ||
                    !EndsInOutput(arguments) ||
                    std::count(arguments.begin(), arguments.end(), capture[i + 1]) > 1 ||
                    plan.display == arguments.back() || arguments.back().starts_with("/dev/fd/"),
                "the output is not read");
    }
    const char* format = screenPipe ? "rawvideo" : "x11grab";
    Require(std::find(capture.begin(), capture.end(), format) != capture.end(),
            "the screen is recorded");
    Require(!EndsInOutput(arguments) || capture.back() == arguments.back() ||
                IsRenaming(arguments.back(), capture.back()),
            "the output stays last: " + capture.back());
}

void CheckRequest(const Arguments& arguments)
{
    const tool::Request request = tool::ReadRequest(arguments);
    Require((request.kind == tool::RequestKind::Malformed) == !request.error.empty(),
            "only what is malformed has an error");
    Require(request.screen >= 0, "a screen's number is none below 0");
    const std::set<int> different(request.audio.begin(), request.audio.end());
    Require(different.size() == request.audio.size() &&
                (different.empty() || *different.begin() >= 0),
            "each device is named once");
    const int rate = tool::SampleRate(arguments);
    Require(rate >= 8000 && rate <= 192000, "a sample rate is sensible");
    if (request.kind == tool::RequestKind::Capture && arguments.back() != *(arguments.end() - 2)) {
        CheckCapture(arguments, std::nullopt, std::nullopt);
        CheckCapture(arguments, std::nullopt, 7);
        CheckCapture(arguments, 9, 7);
    }
}

void CheckJobs(const Arguments& arguments)
{
    if (const auto cut = tool::ReadCut(arguments)) {
        const Arguments expected = {"-ss",
                                    std::to_string(cut->start),
                                    "-i",
                                    arguments[1],
                                    "-t",
                                    std::to_string(cut->length),
                                    "-codec",
                                    "copy",
                                    arguments.back()};
        Require(tool::TranslateCut(*cut) == expected, "a cut seeks in its source");
        Require(cut->start >= 0 && cut->length > 0, "a cut has a length");
    }
    if (const auto conversion = tool::ReadConversion(arguments)) {
        for (const auto kind : {tool::Intermediate::AsAsked, tool::Intermediate::TransportStream,
                                tool::Intermediate::Movie}) {
            const Arguments translated = tool::TranslateConversion(*conversion, kind);
            Require(translated[1] == arguments[1] && translated.back() == arguments.back(),
                    "a conversion keeps its files");
        }
    }
    if (const auto join = tool::ReadJoin(arguments)) {
        std::string list = "concat:";
        for (const std::string& part : join->parts) {
            list += part + "|";
        }
        Require(list == arguments[1] || list == arguments[1] + "|",
                "a join keeps its parts: " + list);
        const Arguments copying = tool::CopyingJoin(arguments, true);
        Require(copying.size() == arguments.size() && copying.back() == arguments.back(),
                "a join keeps its output");
    }
}

Arguments Split(const QString& command)
{
    Arguments arguments;
    for (const QString& word : QProcess::splitCommand(command).mid(1)) {
        arguments.push_back(word.toStdString());
    }
    return arguments;
}

// With any file name the recorder can use: absolute and without double quotes.
void CheckOwnCommands(const QString& text, qint64 start, qint64 length)
{
    const QString name = QString(text).remove('"').remove(QChar(0));
    const QString source = "/v/" + name + ".mp4";
    const QString made = "/m/" + name + ".mp4";
    const auto cut =
        tool::ReadCut(Split(CutCommand("\"/a b/tool\"", source, start, start + length, made)));
    Require(cut && cut->source == source.toStdString() && cut->destination == made.toStdString() &&
                cut->start == start && cut->length == length,
            "the recorder's cut is understood");
    const auto conversion =
        tool::ReadConversion(Split(ChangeToTSCommand("\"/a b/tool\"", source, made)));
    Require(conversion && conversion->source == source.toStdString() &&
                conversion->destination == made.toStdString(),
            "the recorder's conversion is understood");
    const auto join =
        tool::ReadJoin(Split(ConcatCommand("\"/a b/tool\"", {"/v/1.ts", "/v/2.ts"}, made)));
    Require(join && join->parts == std::vector<std::string>({"/v/1.ts", "/v/2.ts"}) &&
                join->destination == made.toStdString(),
            "the recorder's join is understood");
    for (const int audio : {-2, -1, 1}) {
        const Arguments recording = Split(RecordCommand("\"/a b/tool\"", {'0', 0, 1}, audio, made));
        const auto request = tool::ReadRequest(recording);
        Require(request.kind == tool::RequestKind::Capture &&
                    request.audio.size() ==
                        static_cast<size_t>(audio == -1 ? 2 : std::max(audio, 0)),
                "the recorder's recording is understood");
        CheckCapture(recording, std::nullopt, 7);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Arguments arguments = LinesOf(TextOf(data, size));
    if (!arguments.empty()) {
        CheckPassThrough(arguments);
    }
    if (arguments.size() > 1) {
        CheckRequest(arguments);
    }
    CheckJobs(arguments);
    const auto number = static_cast<qint64>(size);
    CheckOwnCommands(QString::fromUtf8(reinterpret_cast<const char*>(data), number),
                     number * number * number, number + 1);
    return 0;
}
