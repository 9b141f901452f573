#include "tests/support/recording_file.h"

#include "tests/support/desktop.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

RecordingFile ReadRecording(const QString& file)
{
    RecordingFile result;
    const Outcome probe = RunProgram(
        "ffprobe", {"-v", "error", "-of", "json", "-show_streams", "-show_format", file});
    const QJsonObject all = QJsonDocument::fromJson(probe.output).object();
    for (const auto& value : all["streams"].toArray()) {
        const QJsonObject track = value.toObject();
        const QString codec = track["codec_name"].toString();
        if (track["codec_type"].toString() == "video") {
            result.pictureTracks << QString("%1 %2 %3x%4")
                                        .arg(codec, track["pix_fmt"].toString())
                                        .arg(track["width"].toInt())
                                        .arg(track["height"].toInt());
        } else {
            result.soundTracks << codec;
        }
    }
    result.seconds = all["format"].toObject()["duration"].toString().toDouble();
    const Outcome play = RunProgram("ffmpeg", {"-v", "error", "-i", file, "-f", "null", "-"});
    if (probe.code != 0 || play.code != 0) {
        result.fault = QString::fromUtf8(probe.error + play.error) + "cannot be played";
    } else if (!play.error.isEmpty()) {
        result.fault = QString::fromUtf8(play.error);
    } else if (result.pictureTracks.isEmpty()) {
        result.fault = "no picture";
    }
    return result;
}

double SecondsIn(const QString& file)
{
    return RunProgram("ffprobe",
                      {"-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0", file})
        .output.toDouble();
}

QMap<QString, QString> PatternReport(const QString& file, int milliseconds,
                                     const QStringList& options)
{
    QMap<QString, QString> report;
    const Outcome outcome =
        RunProgram(RECORDING_REPORT, options + QStringList{file}, {}, milliseconds);
    for (const QString& line : QString::fromUtf8(outcome.output).split('\n', Qt::SkipEmptyParts)) {
        report[line.section('=', 0, 0)] = line.section('=', 1);
    }
    return report;
}

QList<double> Numbers(const QString& list)
{
    QList<double> numbers;
    for (const QString& word : list.split(' ', Qt::SkipEmptyParts)) {
        numbers << word.toDouble();
    }
    return numbers;
}

QList<double> SoundOffsets(const QMap<QString, QString>& report, double from, double to)
{
    constexpr double farthest = 0.45; // half the time between two flashes
    const QList<double> beeps = Numbers(report["beep_times"]);
    QList<double> offsets;
    for (const double flash : Numbers(report["flash_times"])) {
        for (const double beep : beeps) {
            if (flash >= from && flash <= to && std::abs(beep - flash) < farthest) {
                offsets << (beep - flash) * 1000;
            }
        }
    }
    return offsets;
}
