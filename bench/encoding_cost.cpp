#include "bench/encoding_cost.h"

#include "bench/capture_commands.h"
#include "bench/paced_file.h"
#include "tests/support/measure.h"

#include <QFile>
#include <QProcess>

#include <chrono>
#include <sys/resource.h>
#include <thread>

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

struct Files
{
    QString pictures;
    QString sound;
    QString encoded;
};

bool Decode(const QStringList& command, const QString& recording, const Files& files)
{
    const QStringList some = {"-t", QString::number(kSeconds)};
    const QStringList decode =
        QStringList{"ffmpeg", "-y", "-i", recording} + some +
        QStringList{"-map",    "0:v", "-vsync",   "passthrough", "-pix_fmt",
                    "yuv420p", "-f",  "rawvideo", files.pictures} +
        some + QStringList{"-map", "0:a",   "-ac",      "2", "-ar", SampleRate(command),
                           "-f",   "s16le", files.sound};
    return Run(decode) >= 0;
}

// -1 on failure.
double CostFromFiles(const QStringList& command, const Files& files)
{
    const auto encode = [&](int seconds) {
        QFile::remove(files.encoded);
        QStringList encoding = EncodingCommand(command, files.pictures, files.sound, files.encoded);
        encoding.insert(encoding.size() - 1, QString::number(seconds));
        encoding.insert(encoding.size() - 2, "-t");
        return Run(encoding);
    };
    const double start = encode(1);
    const double all = encode(kSeconds);
    return start > 0 && all > start ? (all - start) / (kSeconds - 1) : -1;
}

// -1 on failure.
double CostOfLive(const QStringList& command, const Files& files)
{
    constexpr qint64 soundFrames = 4096; // as `tool` writes them, and 60 ms late
    constexpr double soundDelay = 0.06;
    const double soundPiece = static_cast<double>(soundFrames) / SampleRate(command).toDouble();
    PacedFile pictures(files.pictures, FrameBytes(command), 1 / FrameRate(command), 0);
    PacedFile sound(files.sound, soundFrames * 4, soundPiece, soundPiece + soundDelay);
    QFile::remove(files.encoded);
    QStringList encoding = EncodingCommand(command, pictures.Name(), sound.Name(), files.encoded);
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(encoding.takeFirst(), encoding);
    if (!process.waitForStarted()) {
        return -1;
    }
    const auto start = PacedFile::Clock::now();
    pictures.Start(start);
    sound.Start(start);
    const auto usedAt = [&](int seconds) {
        std::this_thread::sleep_until(start + std::chrono::seconds(seconds));
        return CpuSeconds({process.processId()});
    };
    const double before = usedAt(1);
    const double after = usedAt(kSeconds - 1);
    return process.waitForFinished() && process.exitCode() == 0 ? (after - before) / (kSeconds - 2)
                                                                : -1;
}

} // namespace

std::optional<EncodingCost> CostOfEncoding(const QStringList& command, const QString& recording,
                                           const QString& folder)
{
    const Files files{folder + "/pictures", folder + "/sound", folder + "/encoded.mp4"};
    EncodingCost cost;
    if (Decode(command, recording, files)) {
        cost = {CostFromFiles(command, files), CostOfLive(command, files)};
    }
    QFile::remove(files.pictures);
    return cost.fromFiles > 0 && cost.fedLive > 0 ? std::optional(cost) : std::nullopt;
}
