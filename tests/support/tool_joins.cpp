#include "tests/support/tool_joins.h"

#include <QDir>
#include <QFile>

#include <cmath>

namespace {

// What ffmpeg is told, without the output, for the movie of this name.
QStringList Recipe(const JoinFolder& folder, const QString& name)
{
    const QStringList plain = PlainCodecs();
    const QStringList stereo = plain + QStringList{"-ac", "2"};
    const QStringList both = FlashInput(2.5) + BeepInput(2.5);
    const QMap<QString, QStringList> recipes = {
        {"plain.mp4", both + stereo},
        {"longer.mp4", FlashInput(3.4) + BeepInput(3.4) + stereo},
        {"mute.mp4", FlashInput(2.5) + plain},
        {"b frames.mp4", both + stereo + QStringList{"-bf", "3"}},
        {"size.mp4", FlashInput(2.5, "320x180") + BeepInput(2.5) + stereo},
        {"tall.mp4", FlashInput(2.5, "90x160") + BeepInput(2.5) + stereo},
        {"odd pixels.mp4", both + stereo + QStringList{"-vf", "setsar=4/3"}},
        {"rate.mp4", FlashInput(2.5, "160x120", "60") + BeepInput(2.5) + stereo},
        {"ntsc.mp4", FlashInput(2.5, "160x120", "30000/1001") + BeepInput(2.5) + stereo},
        {"44100.mp4", FlashInput(2.5) + BeepInput(2.5, 44100) + stereo},
        {"mono.mp4", both + plain + QStringList{"-ac", "1"}},
        {"surround.mp4", both + plain + QStringList{"-ac", "6"}},
        {"colours.mp4", both + stereo + QStringList{"-pix_fmt", "yuv444p"}},
        {"h265.mp4", both + QStringList{"-c:v", "libx265", "-preset", "ultrafast", "-x265-params",
                                        "log-level=none", "-c:a", "aac", "-ac", "2"}},
        {"mpeg4.mp4", both + QStringList{"-c:v", "mpeg4", "-c:a", "libmp3lame"}},
        {"turned.mp4",
         QStringList{"-i", folder.Path("plain.mp4"), "-c", "copy", "-metadata:s:v", "rotate=90"}},
        {"short sound.mp4", FlashInput(3) + BeepInput(1.2) + stereo},
        {"long sound.mp4", FlashInput(1.2) + BeepInput(3) + stereo},
        {"as recorded.mp4", FlashInput(2.5) + BeepInput(2.38) + stereo},
        {"late sound.mp4", FlashInput(3) + QStringList{"-itsoffset", "1"} + BeepInput(2) + stereo},
        {"uneven.mp4",
         both + stereo +
             QStringList{"-vf", "select='eq(n,0)+gt(random(0),0.2)'", "-fps_mode", "vfr"}},
        {"fragmented.mp4", both + stereo + QStringList{"-movflags", "frag_keyframe+empty_moov"}},
        {"sound alone.mp4", BeepInput(2) + QStringList{"-c:a", "aac", "-ac", "2"}},
        {"cut.mp4",
         QStringList{"-ss", "1", "-i", folder.Path("longer.mp4"), "-t", "2", "-c", "copy"}},
        {"long.mp4", PictureInput(600, "640x480", "10") + ToneInput(600) + plain},
    };
    return recipes.value(name);
}

} // namespace

QByteArray JoinFolder::Make(const QStringList& names) const
{
    for (const QString& name : names) {
        const QString source = name == "turned.mp4" ? "plain.mp4" : "longer.mp4";
        if (name == "turned.mp4" || name == "cut.mp4") {
            QByteArray problem = Make({source});
            if (!problem.isEmpty()) {
                return problem;
            }
        }
        QByteArray problem = QFile::exists(Path(name))
                                 ? QByteArray()
                                 : MakeMovie(Recipe(*this, name) + QStringList(Path(name)));
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    return {};
}

QString JoinFolder::Convert(const QString& source, const QString& parts, int number) const
{
    QDir().mkpath(Path(parts));
    QString part = Path(parts) + QString("/%1.ts").arg(number);
    QFile::remove(part);
    const Outcome outcome =
        RunProgram(TOOL_PROGRAM, {"-i", Path(source), "-vcodec", "copy", "-acodec", "copy", "-vbsf",
                                  "h264_mp4toannexb", part});
    if (outcome.code != 0) {
        qWarning("%s", qPrintable(QString::fromUtf8(outcome.error)));
    }
    return part;
}

QStringList JoinFolder::JoinArguments(const QStringList& parts)
{
    m_result = Path(QString("Merge_%1.mp4").arg(++m_results));
    return {"-i",      "concat:" + parts.join('|') + '|',
            "-acodec", "copy",
            "-vcodec", "copy",
            "-absf",   "aac_adtstoasc",
            m_result};
}

Outcome JoinFolder::Join(const QStringList& parts)
{
    return RunProgram(TOOL_PROGRAM, JoinArguments(parts));
}

Outcome JoinFolder::Merge(const QStringList& sources, const QString& parts)
{
    const QByteArray problem = Make(sources);
    if (!problem.isEmpty()) {
        return {-1, {}, problem};
    }
    QStringList names;
    for (const QString& source : sources) {
        names << Convert(source, parts, static_cast<int>(names.size()) + 1);
    }
    return Join(names);
}

QByteArray JoinFolder::FaultIn(const QStringList& sources) const
{
    double sum = 0;
    for (const QString& source : sources) {
        sum += Duration(Path(source));
    }
    const double duration = Duration(m_result);
    if (std::abs(duration - sum) >= 0.2 * static_cast<double>(sources.size())) {
        return QByteArray::number(duration) + " s of " + QByteArray::number(sum);
    }
    return DecodingErrors(m_result);
}

QByteArray JoinFolder::FaultInStep(double from) const
{
    const QList<double> flashes = FlashTimes(m_result);
    int compared = 0;
    for (const double beep : BeepTimes(m_result)) {
        double nearest = 1000;
        for (const double flash : flashes) {
            nearest = std::abs(flash - beep) < std::abs(nearest) ? flash - beep : nearest;
        }
        if (beep >= from) {
            ++compared;
            if (std::abs(nearest) >= 0.05) {
                return QByteArray::number(beep) + " s: the flash is off by " +
                       QByteArray::number(nearest) + " s";
            }
        }
    }
    return compared > 0 ? QByteArray() : QByteArray("there is no beep at the end");
}

double JoinFolder::Duration(const QString& path)
{
    return DurationIn(RunProgram(TOOL_PROGRAM, {"-i", path}).error);
}
