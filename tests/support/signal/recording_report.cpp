// Measures a recording of test_pattern.
//
//   recording_report [--at X,Y] [--beep HZ] [--skip SECONDS] FILE
//
// --at: the pattern's upper left corner in the picture (default 0,0). --beep: the beep's frequency
// (default 1000). --skip: seconds at the start to leave out of frame counts (default 0). Prints
// key=value lines, times in seconds:
//
//   duration         of the whole file
//   has_sound        0 or 1
//   width, height    of the picture
//   video_frames     frames in the file after the skipped start
//   distinct_frames  frames that differ from the previous one
//   missing_frames   gaps at 29.97 fps
//   distinct_share   distinct_frames in percent of 29.97 fps
//   fps              video_frames per second
//   sound_duration   of the sound
//   flash_times      start times of flashes, separated by blanks
//   beep_times       start times of beeps
//   av_offset_ms     beep minus flash, median of all pairs; "none" without pairs
//   av_offset_range  the smallest and largest offset
//   av_unpaired      flashes and beeps without a beep or flash within 0.45 s, but not those at the
//                    very beginning and end, where the recording may have cut the other one
//   tones            frequencies heard, separated by blanks
//
// Exits with 1 if the file cannot be decoded.
#include "tests/support/signal/decoder.h"
#include "tests/support/signal/sound_analysis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr double frameRate = 29.97;

struct Options
{
    int x = 0;
    int y = 0;
    double beep = 1000;
    double skip = 0;
    std::string file;
};

bool ReadOptions(Options& options, int count, char** values)
{
    for (int i = 1; i < count; ++i) {
        const std::string name = values[i];
        if (i + 1 < count && name == "--at") {
            if (std::sscanf(values[++i], "%d,%d", &options.x, &options.y) != 2) { // NOLINT
                return false;
            }
        } else if (i + 1 < count && name == "--beep") {
            options.beep = std::atof(values[++i]);
        } else if (i + 1 < count && name == "--skip") {
            options.skip = std::atof(values[++i]);
        } else {
            options.file = name;
        }
    }
    return !options.file.empty();
}

void PrintList(const char* name, const std::vector<double>& values)
{
    std::printf("%s=", name);
    for (size_t i = 0; i < values.size(); ++i) {
        std::printf("%s%.3f", i > 0 ? " " : "", values[i]);
    }
    std::printf("\n");
}

void PrintFrames(const std::vector<Picture>& pictures, double skip)
{
    int frames = 0;
    int distinct = 0;
    int missing = 0;
    double first = 0;
    double last = 0;
    for (size_t i = 1; i < pictures.size(); ++i) {
        if (pictures[i].time < skip) {
            continue;
        }
        first = frames == 0 ? pictures[i].time : first;
        last = pictures[i].time;
        ++frames;
        distinct += pictures[i].number != pictures[i - 1].number ? 1 : 0;
        const long steps = std::lround((pictures[i].time - pictures[i - 1].time) * frameRate);
        missing += static_cast<int>(std::max(steps - 1, 0L));
    }
    const double span = last - first + 1 / frameRate;
    std::printf("video_frames=%d\ndistinct_frames=%d\nmissing_frames=%d\n", frames, distinct,
                missing);
    std::printf("distinct_share=%.2f\nfps=%.3f\n", 100 * distinct / (span * frameRate),
                frames / span);
}

std::vector<double> FlashTimes(const std::vector<Picture>& pictures)
{
    std::vector<double> times;
    size_t last = 0; // the last new frame; those that repeat it show nothing of their time
    for (size_t i = 1; i < pictures.size(); ++i) {
        if (pictures[i].flash && !pictures[i - 1].flash) {
            // It was turned on since then.
            times.push_back((pictures[i].time + pictures[last].time) / 2);
        }
        last = pictures[i].number != pictures[last].number ? i : last;
    }
    return times;
}

// The time nearest to `time`, if it is within 0.45 s.
std::optional<double> Partner(double time, const std::vector<double>& times)
{
    const auto nearest = std::min_element(times.begin(), times.end(), [time](double a, double b) {
        return std::abs(a - time) < std::abs(b - time);
    });
    return nearest != times.end() && std::abs(*nearest - time) < 0.45 ? std::optional(*nearest)
                                                                      : std::nullopt;
}

// Beep minus flash in ms for each flash with a beep.
std::vector<double> Offsets(const std::vector<double>& flashes, const std::vector<double>& beeps)
{
    std::vector<double> offsets;
    for (const double flash : flashes) {
        if (const auto beep = Partner(flash, beeps)) {
            offsets.push_back((*beep - flash) * 1000);
        }
    }
    std::sort(offsets.begin(), offsets.end());
    return offsets;
}

// How many of `times` have no partner, apart from those near the beginning or the end.
long Unpaired(const std::vector<double>& times, const std::vector<double>& partners, double end)
{
    constexpr double margin = 0.2;
    return std::count_if(times.begin(), times.end(), [&](double time) {
        return time > margin && time < end - margin && !Partner(time, partners);
    });
}

std::string Probe(const std::string& file, const char* entries)
{
    auto text = OutputOf({"ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                          entries, "-of", "csv=p=0:s=x", file});
    std::string line = text.value_or("");
    return line.substr(0, line.find('\n'));
}

void PrintSound(const Options& options, const std::vector<Picture>& pictures)
{
    const std::vector<int16_t> sound = DecodeSound(options.file);
    const std::vector<double> flashes = FlashTimes(pictures);
    const std::vector<double> beeps = BeepTimes(sound, soundRate, options.beep);
    const std::vector<double> offsets = Offsets(flashes, beeps);
    std::printf("has_sound=%d\n", sound.empty() ? 0 : 1);
    std::printf("sound_duration=%.3f\n", static_cast<double>(sound.size()) / soundRate);
    PrintList("flash_times", flashes);
    PrintList("beep_times", beeps);
    if (offsets.empty()) {
        std::printf("av_offset_ms=none\nav_offset_range=none\n");
    } else {
        std::printf("av_offset_ms=%.0f\nav_offset_range=%.0f %.0f\n", offsets[offsets.size() / 2],
                    offsets.front(), offsets.back());
    }
    const double end =
        std::min(pictures.back().time, static_cast<double>(sound.size()) / soundRate);
    std::printf("av_unpaired=%ld\n", Unpaired(flashes, beeps, end) + Unpaired(beeps, flashes, end));
    std::printf("tones=");
    const std::vector<int> tones = TonesPresent(sound, soundRate);
    for (size_t i = 0; i < tones.size(); ++i) {
        std::printf("%s%d", i > 0 ? " " : "", tones[i]);
    }
    std::printf("\n");
}

} // namespace

int main(int count, char** values)
{
    Options options;
    if (!ReadOptions(options, count, values)) {
        std::fprintf(stderr, "recording_report: a file is needed\n");
        return 2;
    }
    const std::vector<Picture> pictures = DecodePictures(options.file, options.x, options.y);
    if (pictures.empty()) {
        std::fprintf(stderr, "recording_report: %s cannot be decoded\n", options.file.c_str());
        return 1;
    }
    const std::string size = Probe(options.file, "stream=width,height");
    std::printf("duration=%s\n", Probe(options.file, "format=duration").c_str());
    std::printf("width=%d\nheight=%d\n", std::atoi(size.c_str()),
                std::atoi(size.substr(std::min(size.find('x') + 1, size.size())).c_str()));
    PrintFrames(pictures, options.skip);
    PrintSound(options, pictures);
    return 0;
}
