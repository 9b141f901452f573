// What a job finds in a chunk of `tool`'s output, and what `tool` finds in ffmpeg's.
#include "jobs/job_report.h"
#include "jobs/merge_command.h"
#include "tests/fuzz/target.h"
#include "tool/edit/encoding_join.h"
#include "tool/edit/output_filter.h"

#include <algorithm>
#include <cmath>
#include <regex>

namespace {

void CheckMarks(const QString& text)
{
    const OutputMarks all = MarksIn(text);
    for (const qsizetype at : {text.size() / 3, text.size() / 2}) {
        const OutputMarks left = MarksIn(text.left(at));
        const OutputMarks right = MarksIn(text.mid(at));
        Require(all.tick >= (left.tick || right.tick) &&
                    all.invalid >= (left.invalid || right.invalid) &&
                    all.missing >= (left.missing || right.missing),
                "a mark in a part is one in the whole");
    }
}

void CheckTexts(const QString& text)
{
    for (const int operation : {kMergeOperation, kCutOperation}) {
        const QString shown = ProgressText(operation, 50, text, text);
        Require(shown.startsWith("  Process: 50%\n"), "the percentage leads");
        Require(std::all_of(shown.begin(), shown.end(), [](QChar c) { return c.unicode() < 256; }),
                "paths are shown in Latin-1");
        Require(SuccessText(operation, text).contains(text), "success names the file");
    }
    for (qsizetype files = 0; files <= 20; ++files) {
        const qint64 total = MergeTicks(files);
        const int percent = MergePercent(qMin<qint64>(text.size(), total), total);
        Require(percent >= 0 && percent <= 100, "progress is a percentage");
    }
}

void CheckDescription(const tool::PartDescription& part)
{
    static const std::regex rate(R"(\d+(\.\d+)?|\d+/1001)");
    // What can be part of a filter chain without ending it.
    static const std::regex channels(R"([A-Za-z0-9.()+ ]+)");
    constexpr int largest = 16384;
    Require(part.width >= 0 && part.width <= largest && part.width % 2 == 0,
            "a width is even and sensible");
    Require(part.height >= 0 && part.height <= largest && part.height % 2 == 0,
            "a height is even and sensible");
    Require(!part.HasPicture() || std::regex_match(part.rate, rate),
            "a rate is a number: " + part.rate);
    Require(part.sampleRate >= 0 && part.sampleRate <= 1000000, "a sample rate is sensible");
    Require(!part.HasSound() || std::regex_match(part.channels, channels),
            "channels have a plain name: " + part.channels);
    Require(std::isfinite(part.duration) && part.duration >= 0 && part.duration < 1e6,
            "a duration is sensible");
}

void CheckDescriptions(const std::string& text)
{
    const auto parts = tool::ParseDescriptions(text);
    std::for_each(parts.begin(), parts.end(), CheckDescription);
    std::vector<std::string> urls;
    for (size_t i = 0; i < parts.size(); ++i) {
        urls.push_back("file:/dev/fd/" + std::to_string(i + 3));
    }
    const std::vector<std::string> arguments = tool::EncodingJoin(urls, parts);
    const auto option = std::find(arguments.begin(), arguments.end(), "-filter_complex");
    Require(option != arguments.end(), "there is a graph");
    const std::string& graph = *std::next(option);
    Require(std::count(graph.begin(), graph.end(), '[') ==
                std::count(graph.begin(), graph.end(), ']'),
            "every label in the graph is closed");
}

// What the recorder may see of it while a job runs.
void CheckFilter(const std::string& text)
{
    tool::OutputFilter whole;
    const std::string shown = whole.Take(text + "\n");
    const OutputMarks marks = MarksIn(QString::fromLatin1(shown.data()));
    Require(!marks.tick && !marks.invalid && !marks.missing, "no mark is shown: " + shown);
    Require(shown.find('\0') == std::string::npos, "nothing is hidden behind a zero byte");
    Require(std::isfinite(whole.Seconds()) && whole.Seconds() >= 0, "a time is sensible");
    tool::OutputFilter pieces;
    const std::string_view view = text;
    const size_t half = text.size() / 2;
    std::string joined = pieces.Take(view.substr(0, half));
    joined += pieces.Take(view.substr(half));
    Require(shown.starts_with(joined), "pieces are shown like the whole");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = ToolTextOf(data, size);
    CheckMarks(text);
    CheckTexts(text);
    CheckTexts(QString::fromUtf8(text.toLatin1()));
    CheckDescriptions(TextOf(data, size));
    CheckFilter(TextOf(data, size));
    return 0;
}
