#include "tool/edit/join.h"

#include "tool/edit/job.h"
#include "tool/edit/transport_stream.h"
#include "tool/ffmpeg/features.h"
#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/mp4/frugal_file.h"
#include "tool/system/complaint.h"
#include "tool/system/one_of.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace tool {
namespace {

constexpr const char* protocol = "concat:";

// Used if ffmpeg reports no rate or an absurd one.
constexpr const char* usualRate = "30";

// Limits of what can be encoded here: pixels, and samples per second.
constexpr int largestSide = 16384;
constexpr double highestRate = 1000000;

// Used if ffmpeg's name for the channels is not valid in a filter.
constexpr std::string_view usualChannels = "stereo";
constexpr std::array<unsigned char, 5> layoutSigns = {'.', '(', ')', '+', ' '};

// Register 0 holds the end time of the sound kept so far. A packet that starts more than half its
// length before that is dropped. A gap of more than two packets resets the time to the end of the
// packet after it.
constexpr const char* soundInTime =
    R"(,noise=drop='if(lt(pts\,ld(0)-d/2)\,1\,0*st(0\,if(gt(pts\,ld(0)+2*d)\,pts\,ld(0))+d))')";

bool IsFile(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

std::vector<std::string> SplitAtBars(const std::string& list)
{
    std::vector<std::string> pieces;
    for (size_t at = 0; at < list.size();) {
        const size_t bar = std::min(list.find('|', at), list.size());
        pieces.push_back(list.substr(at, bar - at));
        at = bar + 1;
    }
    return pieces;
}

// How many of the pieces from `at` on make up the name of an existing file, or 1 if none do.
size_t PiecesOfName(const std::vector<std::string>& pieces, size_t at, std::string& name)
{
    name = pieces[at];
    std::string longer = name;
    for (size_t next = at + 1; !IsFile(longer); ++next) {
        if (next == pieces.size()) {
            return 1;
        }
        longer.append("|").append(pieces[next]);
        if (IsFile(longer)) {
            name = longer;
            return next - at + 1;
        }
    }
    return 1;
}

// The number at the start of the text, or 0 if there is none or it is not finite.
double ToNumber(std::string_view text)
{
    double value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    return result.ec == std::errc() && std::isfinite(value) ? value : 0;
}

// The last number before the unit, such as 25 before " fps", or empty if there is none.
std::string_view Before(std::string_view line, std::string_view unit)
{
    const size_t end = line.find(unit);
    if (end == std::string_view::npos) {
        return {};
    }
    const size_t begin = line.rfind(' ', end - 1);
    return line.substr(begin + 1, end - begin - 1);
}

// Digits, optionally with a decimal point and more digits.
bool IsDecimal(std::string_view text)
{
    return text.find_first_not_of("0123456789.") == std::string_view::npos &&
           std::count(text.begin(), text.end(), '.') <= 1 && !text.starts_with('.') &&
           !text.ends_with('.');
}

// Recovers the exact rate; ffmpeg prints rates rounded to two digits.
std::string ExactRate(std::string_view text)
{
    for (const int whole : {24, 30, 48, 60, 120}) {
        if (std::abs(ToNumber(text) - whole / 1.001) < 0.006) {
            return std::to_string(whole * 1000) + "/1001";
        }
    }
    const double rate = ToNumber(text);
    const bool sensible = rate >= 1 && rate <= 240;
    return sensible && IsDecimal(text) ? std::string(text) : usualRate;
}

int Even(double size)
{
    return std::max(2, static_cast<int>(std::lround(size / 2)) * 2);
}

// Parses ", 320x240 [SAR 4:3 ...". Anything else leaves the part without a picture.
void ParsePicture(std::string_view line, PartDescription& part)
{
    for (size_t at = line.find(", "); at != std::string_view::npos; at = line.find(", ", at + 1)) {
        const std::string_view field = line.substr(at + 2);
        int width = 0;
        int height = 0;
        const auto first = std::from_chars(field.data(), field.data() + field.size(), width);
        if (first.ec != std::errc() || first.ptr == field.data() + field.size() ||
            *first.ptr != 'x' ||
            std::from_chars(first.ptr + 1, field.data() + field.size(), height).ec != std::errc() ||
            width < 1 || width > largestSide || height < 1 || height > largestSide) {
            continue;
        }
        double shape = 1;
        if (const size_t sar = field.find("[SAR "); sar != std::string_view::npos) {
            const std::string_view ratio = field.substr(sar + 5);
            const double tall =
                ToNumber(ratio.substr(std::min(ratio.find(':'), ratio.size() - 1) + 1));
            shape = tall > 0 && ToNumber(ratio) > 0 ? ToNumber(ratio) / tall : 1;
        }
        if (width * shape < 1 || width * shape > largestSide) {
            shape = 1;
        }
        part.width = Even(width * shape);
        part.height = Even(height);
        break;
    }
    const std::string_view rate = Before(line, " fps");
    part.rate = rate.empty() ? usualRate : ExactRate(rate);
}

// Parses "..., 48000 Hz, stereo, fltp, ...".
void ParseSound(std::string_view line, PartDescription& part)
{
    const double rate = ToNumber(Before(line, " Hz, "));
    if (rate < 1 || rate > highestRate) {
        return;
    }
    part.sampleRate = static_cast<int>(rate);
    const std::string_view rest = line.substr(line.find(" Hz, ") + 5);
    const std::string_view channels = rest.substr(0, rest.find(','));
    // Other characters would break out of their place in the filter graph.
    const bool plain = std::all_of(channels.begin(), channels.end(), [](unsigned char letter) {
        return letter < 0x80 && (std::isalnum(letter) != 0 || IsOneOf(layoutSigns, letter));
    });
    part.channels = plain && !channels.empty() ? channels : usualChannels;
}

double ParseDuration(std::string_view line)
{
    const std::string_view text = line.substr(line.find(": ") + 2);
    const double seconds = text.size() < 11
                               ? 0
                               : ToNumber(text.substr(0, 2)) * 3600 +
                                     ToNumber(text.substr(3, 2)) * 60 + ToNumber(text.substr(6, 5));
    return std::max(seconds, 0.0);
}

void ParseLine(std::string_view line, PartDescription& part)
{
    constexpr std::string_view turned = "displaymatrix: rotation of ";
    // ffmpeg before 5 indents stream lines further.
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    const bool isStream = line.starts_with("Stream #");
    if (line.starts_with("Duration: ")) {
        part.duration = ParseDuration(line);
    } else if (isStream && line.find(": Video: ") != std::string_view::npos && part.width == 0) {
        ParsePicture(line, part);
    } else if (isStream && line.find(": Audio: ") != std::string_view::npos &&
               part.sampleRate == 0) {
        ParseSound(line, part);
    } else if (const size_t at = line.find(turned); at != std::string_view::npos) {
        const double degrees = std::abs(ToNumber(line.substr(at + turned.size())));
        if (degrees > 45 && degrees < 135) {
            std::swap(part.width, part.height);
        }
    }
}

// The label of a part's picture or sound in the graph, such as "[v3]".
std::string Label(char kind, size_t index)
{
    std::string label = "[";
    label += kind;
    label += std::to_string(index);
    label += ']';
    return label;
}

// ffmpeg's name for a part's track, such as "[3:v:0]".
std::string Input(size_t index, const char* kind)
{
    return std::string("[").append(std::to_string(index)).append(":").append(kind).append(":0]");
}

// Builds the filter graph that brings all parts to the same format.
class JoinGraph
{
public:
    JoinGraph(const std::vector<PartDescription>& parts) : m_parts(parts)
    {
        for (const PartDescription& part : parts) {
            if (part.HasPicture() && m_picture == nullptr) {
                m_picture = &part;
            }
            if (part.HasSound() && m_sound == nullptr) {
                m_sound = &part;
            }
        }
    }

    const PartDescription* Picture() const { return m_picture; }
    const PartDescription* Sound() const { return m_sound; }
    std::string Text() const;

private:
    std::string PictureChain(size_t index) const;
    std::string SoundChain(size_t index) const;

    const std::vector<PartDescription>& m_parts;
    const PartDescription* m_picture = nullptr;
    const PartDescription* m_sound = nullptr;
};

std::string JoinGraph::PictureChain(size_t index) const
{
    const std::string width = std::to_string(m_picture->width);
    const std::string height = std::to_string(m_picture->height);
    const std::string size = width + ":" + height;
    const std::string even = ",format=yuv420p,setsar=1";
    if (!m_parts[index].HasPicture()) {
        return "color=black:s=" + width + "x" + height + ":r=" + m_picture->rate +
               ":d=" + std::to_string(m_parts[index].duration) + even;
    }
    // The largest even size that fits. ffmpeg before 4.3 has no option for that.
    const std::string fitting = "'round(min(" + width + "," + height + "*a)/2)*2':'round(min(" +
                                height + "," + width + "/a)/2)*2'";
    return Input(index, "v") + "fps=" + m_picture->rate +
           ":start_time=0,scale=trunc(iw*sar/2)*2:ih,scale=" + fitting + ",pad=" + size +
           ":(ow-iw)/2:(oh-ih)/2" + even;
}

std::string JoinGraph::SoundChain(size_t index) const
{
    const std::string rate = std::to_string(m_sound->sampleRate);
    const std::string shape =
        "aformat=sample_fmts=fltp:sample_rates=" + rate + ":channel_layouts=" + m_sound->channels;
    if (!m_parts[index].HasSound()) {
        // The length does not matter: concat pads the sound to the length of the picture.
        return "anullsrc=r=" + rate + ":cl=" + m_sound->channels + ",atrim=end=0.01," + shape;
    }
    return Input(index, "a") + "aresample=" + rate + ":async=1:first_pts=0," + shape;
}

std::string JoinGraph::Text() const
{
    std::string text;
    std::string inputs;
    for (size_t i = 0; i < m_parts.size(); ++i) {
        if (m_picture != nullptr) {
            text += PictureChain(i) + Label('v', i) + ";";
            inputs += Label('v', i);
        }
        if (m_sound != nullptr) {
            text += SoundChain(i) + Label('a', i) + ";";
            inputs += Label('a', i);
        }
    }
    text += inputs;
    text += "concat=n=" + std::to_string(m_parts.size());
    text += m_picture != nullptr ? ":v=1" : ":v=0";
    text += m_sound != nullptr ? ":a=1" : ":a=0";
    text += m_picture != nullptr ? "[v]" : "";
    text += m_sound != nullptr ? "[a]" : "";
    return text;
}

} // namespace

std::vector<std::string> SplitList(const std::string& list)
{
    const std::vector<std::string> pieces = SplitAtBars(list);
    std::vector<std::string> parts;
    for (size_t at = 0; at < pieces.size();) {
        std::string name;
        at += PiecesOfName(pieces, at, name);
        parts.push_back(name);
    }
    return parts;
}

Arguments CopyingJoin(const Join& join, bool dropsOverlap)
{
    std::string filter = "aac_adtstoasc";
    if (dropsOverlap) {
        filter += soundInTime;
    }
    return {"-i",   protocol + join.list, "-acodec", "copy", "-vcodec", "copy", "-bsf:a",
            filter, join.destination};
}

bool CanBeCopied(const std::vector<std::string>& parts)
{
    const bool hasBar = std::any_of(parts.begin(), parts.end(), [](const auto& part) {
        return part.find('|') != std::string::npos;
    });
    return !hasBar && FitTogether(parts);
}

std::vector<PartDescription> ParseDescriptions(const std::string& text)
{
    std::vector<PartDescription> parts;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = std::string_view(text).substr(at, end - at);
        if (line.starts_with("Input #")) {
            parts.emplace_back();
        } else if (!parts.empty()) {
            ParseLine(line, parts.back());
        }
        at = end + 1;
    }
    return parts;
}

Arguments EncodingJoin(const std::vector<std::string>& names,
                       const std::vector<PartDescription>& parts, const std::string& destination)
{
    Arguments result;
    for (const std::string& name : names) {
        // All decoders exist at once, each with a set of frames per thread.
        result.insert(result.end(), {"-threads", "1", "-i", name});
    }
    const JoinGraph graph(parts);
    result.insert(result.end(), {"-filter_complex", graph.Text()});
    if (graph.Picture() != nullptr) {
        result.insert(result.end(), {"-map", "[v]", "-c:v", "libx264", "-preset", "ultrafast",
                                     "-crf", "20", "-r", graph.Picture()->rate});
    }
    if (graph.Sound() != nullptr) {
        result.insert(result.end(), {"-map", "[a]", "-c:a", "aac"});
    }
    result.push_back(destination);
    return result;
}

// The encoding ffmpeg opens all parts before it starts, so it finishes even if they are deleted
// meanwhile.
int RunJoin(const std::string& ffmpeg, const Join& join)
{
    const std::vector<std::string> names = SplitList(join.list);
    // Each conversion has made one of 20 ticks, and the last tick of all would tell the end early.
    const int ticks = 19 * static_cast<int>(names.size()) + 19;
    if (names.empty() || CanBeCopied(names)) {
        const bool dropsOverlap = names.size() > 1 && FeaturesOf(ffmpeg).noiseDrop;
        Job job{.ffmpeg = ffmpeg,
                .arguments = CopyingJoin(join, dropsOverlap),
                .destination = join.destination,
                .ticks = ticks};
        job.arguments.pop_back(); // the job names the output
        for (const std::string& name : names) {
            job.bytes += FrugalFile(name, 0).Size();
        }
        return RunJob(job);
    }
    Arguments question = {"-hide_banner"};
    for (const std::string& name : names) {
        question.insert(question.end(), {"-i", name});
    }
    const std::string answer = Ask(ffmpeg, question);
    const auto parts = ParseDescriptions(answer);
    if (parts.size() != names.size()) {
        // ffmpeg's output says which part it cannot read.
        std::fwrite(answer.data(), 1, answer.size(), stderr);
        return failed;
    }
    for (size_t i = 0; i < parts.size(); ++i) {
        if (!parts[i].HasPicture() && !parts[i].HasSound()) {
            return Complain(names[i] + ": Invalid data: neither picture nor sound");
        }
    }
    Job job{.ffmpeg = ffmpeg,
            .arguments = EncodingJoin(names, parts, join.destination),
            .destination = join.destination,
            .ticks = ticks};
    job.arguments.pop_back(); // the job names the output
    for (const PartDescription& part : parts) {
        job.seconds += part.duration;
    }
    return RunJob(job);
}

} // namespace tool
