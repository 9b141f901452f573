#include "bench/encoding_cost.h"

#include "bench/capture_commands.h"

#include <QFile>
#include <QProcess>

#include <sys/resource.h>

namespace {

constexpr int kSeconds = 10; // half a gigabyte of pictures

// Processor seconds of the programs that have ended so far.
double SecondsOfEnded()
{
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

// The processor seconds it takes, or -1 if it fails.
double Run(QStringList command)
{
    const double before = SecondsOfEnded();
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(command.takeFirst(), command);
    const bool good = process.waitForFinished(120000) && process.exitCode() == 0;
    return good ? SecondsOfEnded() - before : -1;
}

} // namespace

double EncodingCost(const QStringList& command, const QString& recording, const QString& folder)
{
    const QString pictures = folder + "/pictures";
    const QString sound = folder + "/sound";
    const QString encoded = folder + "/encoded.mp4";
    const QStringList some = {"-t", QString::number(kSeconds)};
    const QStringList decode =
        QStringList{"ffmpeg", "-y", "-i", recording} + some +
        QStringList{"-map",    "0:v", "-vsync",   "passthrough", "-pix_fmt",
                    "yuv420p", "-f",  "rawvideo", pictures} +
        some +
        QStringList{"-map", "0:a", "-ac", "2", "-ar", SampleRate(command), "-f", "s16le", sound};
    if (Run(decode) < 0) {
        return -1;
    }
    const auto encode = [&](int seconds) {
        QFile::remove(encoded);
        QStringList encoding = EncodingCommand(command, pictures, sound, encoded);
        encoding.insert(encoding.size() - 1, QString::number(seconds));
        encoding.insert(encoding.size() - 2, "-t");
        return Run(encoding);
    };
    const double start = encode(1);
    const double all = encode(kSeconds);
    QFile::remove(pictures);
    return start > 0 && all > start ? (all - start) / (kSeconds - 1) : -1;
}
