#include "bench/wayland_drift.h"

#include "bench/flash_and_beep.h"
#include "bench/table.h"
#include "tests/support/recording_file.h"

#include <cmath>

QStringList PunctualPattern(const Sounding& sounding)
{
    constexpr auto latest = "10"; // ms
    return {"--geometry", QString("640x96+0+%1").arg(sounding.y),
            "--punctual", latest,
            "--beep",     QString("%1@%2").arg(sounding.hertz).arg(sounding.output)};
}

// ffmpeg keeps an entry for each frame and piece of sound until the end. `tool` uses the memory of
// more frames, up to eight, once ffmpeg has fallen behind.
void PrintGrowth(const QMap<qint64, Holding>& processes, int minutes)
{
    constexpr double mostGrowth = 2;    // MiB
    constexpr double indexGrowth = 0.5; // MiB a minute
    constexpr double queue = 7 * 1280 * 800 * 1.5 / 1048576;
    const QMap<QString, double> more{{"ffmpeg", indexGrowth * minutes}, {"tool", queue}};
    for (const Holding& process : processes) {
        const double most = mostGrowth + more.value(process.name);
        Row("  growth of " + process.name,
            QString("%1 MiB, from %2")
                .arg(Number(process.Growth(), 1), Number(process.memory[0], 1)),
            "<= " + Number(most, 0) + " MiB",
            process.Growth() <= most && !process.memory.contains(0));
    }
}

void PrintFrames(const QMap<QString, QString>& report)
{
    Row("  frames missing", report["missing_frames"], "0", report["missing_frames"] == "0");
    Row("  frames distinct", report["distinct_share"] + " %");
}

void PrintOffsets(const QMap<QString, QString>& report, const Sounding& sounding)
{
    constexpr double minute = 60;
    constexpr double most = 50; // ms
    const double length = report["duration"].toDouble();
    const auto print = [&](const QString& when, double from, double to) {
        const QList<double> offsets = SoundOffsets(report, from, to);
        const double median = Median(offsets);
        const bool heard = !offsets.isEmpty();
        const QString what = QString("  %1, %2 minute: ").arg(sounding.name, when);
        Row(what + "sound after picture",
            heard ? QString("%1 ms of %2").arg(median, 0, 'f', 0).arg(offsets.size()) : "not heard",
            "+-50 ms", heard && std::abs(median) <= most);
        PrintWorstPair(what + "flash farthest from its beep", WorstPair(report, from, to));
    };
    print("first", 0, minute);
    print("last", length - minute, length);
}
