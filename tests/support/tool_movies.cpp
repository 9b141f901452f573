#include "tests/support/tool_movies.h"

#include "tests/support/movie_cache.h"

#include <cstdlib>

QByteArray MakeMovie(const QStringList& arguments)
{
    const MovieCache cache(arguments);
    if (cache.Fetch()) {
        return {};
    }
    const QStringList quiet = {"-v", "error", "-nostdin", "-y"};
    const Outcome outcome = RunProgram("ffmpeg", quiet + arguments);
    if (outcome.code != 0) {
        return arguments.join(' ').toUtf8() + "\n" + outcome.error + " (" +
               QByteArray::number(outcome.code) + ")";
    }
    cache.Keep();
    return {};
}

QStringList PictureInput(double seconds, const QString& size, const QString& rate)
{
    return {"-f", "lavfi", "-i",
            QString("testsrc2=s=%1:r=%2:d=%3").arg(size, rate, QString::number(seconds))};
}

QStringList ToneInput(double seconds, int rate)
{
    return {"-f", "lavfi", "-i",
            QString("sine=440:r=%1:d=%2").arg(rate).arg(QString::number(seconds))};
}

QStringList PlainCodecs()
{
    return {"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-c:a", "aac"};
}

QByteArray DurationLine(const QByteArray& output)
{
    const qsizetype begin = output.indexOf("  Duration: ");
    return begin < 0 ? QByteArray() : output.mid(begin, output.indexOf('\n', begin) - begin);
}

double DurationIn(const QByteArray& output)
{
    const QByteArray line = DurationLine(output).mid(12, 11);
    const QList<QByteArray> fields = line.split(':');
    return fields.size() != 3
               ? -1
               : fields[0].toInt() * 3600 + fields[1].toInt() * 60 + fields[2].toDouble();
}

QStringList PictureDigests(const QString& path, const QStringList& seek)
{
    const QStringList from = QStringList{"-v", "error", "-nostdin"} + seek;
    const QStringList to = {"-map", "0:v", "-fps_mode", "passthrough", "-f", "framemd5", "-"};
    const Outcome outcome = RunProgram("ffmpeg", from + QStringList{"-i", path} + to);
    QStringList digests;
    for (const QByteArray& line : outcome.output.split('\n')) {
        if (line.startsWith("0,")) {
            digests << QString::fromLatin1(line.mid(line.lastIndexOf(',') + 1).trimmed());
        }
    }
    return digests;
}

QByteArray DecodingErrors(const QString& path)
{
    const Outcome outcome = RunProgram(
        "ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0", "-f", "null", "-"});
    return outcome.code == 0 ? outcome.error
                             : outcome.error + " (" + QByteArray::number(outcome.code) + ")";
}

QStringList FlashInput(double seconds, const QString& size, const QString& rate)
{
    return {
        "-f", "lavfi", "-i",
        QString("color=black:s=%1:r=%2:d=%3,drawbox=c=white:t=fill:enable='lt(mod(t+0.001,1),0.1)'")
            .arg(size, rate, QString::number(seconds))};
}

QStringList BeepInput(double seconds, int rate)
{
    return {"-f", "lavfi", "-i",
            QString("aevalsrc='if(lt(mod(t,1),0.1),0.8*sin(3000*t),0)':s=%1:d=%2")
                .arg(rate)
                .arg(QString::number(seconds))};
}

// The positions where `values` rises above the threshold after at least `calm` values below it.
static QList<double> Rises(const QList<int>& values, int threshold, int calm, double perSecond)
{
    QList<double> times;
    int quiet = calm;
    for (qsizetype i = 0; i < values.size(); ++i) {
        if (values[i] <= threshold) {
            ++quiet;
            continue;
        }
        if (quiet >= calm) {
            times << static_cast<double>(i) / perSecond;
        }
        quiet = 0;
    }
    return times;
}

QList<double> FlashTimes(const QString& path)
{
    const Outcome outcome = RunProgram(
        "ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0:v:0", "-vf",
                   "fps=100:start_time=0,scale=1:1:flags=area,format=gray", "-f", "rawvideo", "-"});
    QList<int> values;
    for (const char value : outcome.output) {
        values << static_cast<unsigned char>(value);
    }
    return Rises(values, 60, 10, 100);
}

QList<double> BeepTimes(const QString& path)
{
    const Outcome outcome = RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map",
                                                  "0:a:0", "-af", "aresample=async=1:first_pts=0",
                                                  "-ac", "1", "-ar", "8000", "-f", "u8", "-"});
    QList<int> values;
    for (const char value : outcome.output) {
        values << std::abs(static_cast<unsigned char>(value) - 128);
    }
    return Rises(values, 25, 800, 8000);
}
