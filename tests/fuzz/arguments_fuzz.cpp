// `tool`'s translation of arguments: any words, one per line, and the recorder's own commands for
// any file.
#include "jobs/cut_command.h"
#include "jobs/merge_command.h"
#include "jobs/record_command.h"
#include "tests/fuzz/target.h"
#include "tool/command/command.h"
#include "tool/feed/fed_inputs.h"
#include "tool/record/capture_command.h"

#include <QProcess>

#include <algorithm>
#include <set>

namespace {

using tool::Arguments;

bool IsRenaming(const std::string& from, const std::string& to)
{
    return (from == "-vbsf" && to == "-bsf:v") || (from == "-absf" && to == "-bsf:a");
}

void CheckPassedOn(const Arguments& arguments, const Arguments& passed)
{
    Require(passed.size() == arguments.size(), "no word is added or lost");
    for (size_t i = 0; i < passed.size(); ++i) {
        Require(passed[i] == arguments[i] || IsRenaming(arguments[i], passed[i]),
                "a word stays as it is: " + arguments[i]);
    }
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

void CheckCapture(const tool::Record& record, const Arguments& arguments,
                  const std::optional<int>& screenPipe, const std::optional<int>& soundPipe)
{
    const tool::FeedPlan plan{":4", {100, 20, 1280, 800}, soundPipe, screenPipe};
    const Arguments capture = tool::CaptureCommand(record, {tool::FedInputs(record, plan), {true}});
    const std::set<std::string> known(arguments.begin(), arguments.end());
    for (const std::string& word : capture) {
        Require(MayBeNew(word, known), "no word is invented: " + word);
    }
    const char* format = screenPipe ? "rawvideo" : "x11grab";
    Require(std::find(capture.begin(), capture.end(), format) != capture.end(),
            "the screen is recorded");
    Require(record.file.empty() || capture.back() == record.file, "the output stays last");
}

void CheckRecord(const tool::Record& record, const Arguments& arguments)
{
    Require(record.screen >= 0, "a screen's number is none below 0");
    const std::set<int> different(record.sounds.begin(), record.sounds.end());
    Require(different.size() == record.sounds.size() &&
                (different.empty() || *different.begin() >= 0),
            "each device is named once");
    Require(record.sampleRate >= 8000 && record.sampleRate <= 192000, "a sample rate is sensible");
    Require(record.file.empty() || record.file == arguments.back() ||
                IsRenaming(arguments.back(), record.file),
            "the output is the last word: " + record.file);
    CheckCapture(record, arguments, std::nullopt, std::nullopt);
    CheckCapture(record, arguments, std::nullopt, 7);
    CheckCapture(record, arguments, 9, 7);
}

void CheckCommand(const Arguments& arguments)
{
    const tool::Command command = tool::ReadCommand(arguments);
    if (const auto* record = std::get_if<tool::Record>(&command)) {
        CheckRecord(*record, arguments);
    } else if (const auto* rest = std::get_if<tool::PassOn>(&command)) {
        CheckPassedOn(arguments, rest->arguments);
    } else if (const auto* malformed = std::get_if<tool::Malformed>(&command)) {
        Require(!malformed->error.empty(), "what is malformed has a reason");
    } else if (const auto* cut = std::get_if<tool::Cut>(&command)) {
        Require(cut->source == arguments[1] && cut->destination == arguments.back(),
                "a cut keeps its files");
    } else if (const auto* convert = std::get_if<tool::Convert>(&command)) {
        Require(convert->source == arguments[1] && convert->destination == arguments.back(),
                "a conversion keeps its files");
    } else if (const auto* join = std::get_if<tool::Join>(&command)) {
        Require("concat:" + join->list == arguments[1] && join->destination == arguments.back(),
                "a join keeps its parts and its output");
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
    const auto read = [](const QString& command) { return tool::ReadCommand(Split(command)); };
    const tool::Command trim =
        read(CutCommand("\"/a b/tool\"", source, start, start + length, made));
    const auto* cut = std::get_if<tool::Cut>(&trim);
    Require(cut != nullptr && cut->source == source.toStdString() &&
                cut->destination == made.toStdString() && cut->start == start &&
                cut->length == length,
            "the recorder's cut is understood");
    const tool::Command preparation = read(ChangeToTSCommand("\"/a b/tool\"", source, made));
    const auto* convert = std::get_if<tool::Convert>(&preparation);
    Require(convert != nullptr && convert->source == source.toStdString() &&
                convert->destination == made.toStdString(),
            "the recorder's conversion is understood");
    const tool::Command merge = read(ConcatCommand("\"/a b/tool\"", {"/v/1.ts", "/v/2.ts"}, made));
    const auto* join = std::get_if<tool::Join>(&merge);
    Require(join != nullptr && join->list.starts_with("/v/1.ts|/v/2.ts") &&
                join->destination == made.toStdString(),
            "the recorder's join is understood");
    for (const int audio : {-2, -1, 1}) {
        const tool::Command recording =
            read(RecordCommand("\"/a b/tool\"", {'0', 0, 1}, audio, made));
        const auto* record = std::get_if<tool::Record>(&recording);
        Require(record != nullptr && record->fragmented && record->isYuv420 &&
                    record->sounds.size() ==
                        static_cast<size_t>(audio == -1 ? 2 : std::max(audio, 0)),
                "the recorder's recording is understood");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Arguments arguments = LinesOf(TextOf(data, size));
    CheckCommand(arguments);
    const auto number = static_cast<qint64>(size);
    CheckOwnCommands(QString::fromUtf8(reinterpret_cast<const char*>(data), number),
                     number * number * number, number + 1);
    return 0;
}
