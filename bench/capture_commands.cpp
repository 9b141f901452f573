#include "bench/capture_commands.h"

#include "tests/support/measure.h"

namespace {

// Where the input of this format has its file name, or -1.
qsizetype InputName(const QStringList& command, const QString& format)
{
    const auto begin = command.indexOf(format);
    const auto option = begin < 0 ? begin : command.indexOf("-i", begin);
    return option < 0 ? option : option + 1;
}

} // namespace

QStringList EncoderOf(const QList<qint64>& processes)
{
    for (const qint64 process : processes) {
        QStringList command = CommandLine(process);
        if (command.contains("rawvideo")) {
            return command;
        }
    }
    return {};
}

QStringList StockCommand(QStringList command, const QString& destination)
{
    const auto picture = command.indexOf("rawvideo");
    const auto name = InputName(command, "rawvideo");
    const QString size = command.value(command.indexOf("-video_size") + 1);
    const QString rate = command.value(command.indexOf("-framerate") + 1);
    if (name > 0) {
        const QStringList grab = {"x11grab",     "-framerate", rate,
                                  "-video_size", size,         "-draw_mouse",
                                  "1",           "-i",         qEnvironmentVariable("DISPLAY")};
        command = command.mid(0, picture) + grab + command.mid(name + 1);
    }
    const auto sound = InputName(command, "s16le");
    if (sound > 0) {
        command[sound] = "speaker.monitor";
        command[command.indexOf("s16le")] = "pulse";
    }
    command.last() = destination;
    return command;
}

QStringList EncodingCommand(QStringList command, const QString& pictures, const QString& sound,
                            const QString& destination)
{
    const auto skipped = command.indexOf("-skip_initial_bytes");
    if (skipped >= 0) {
        command.remove(skipped, 2);
    }
    for (const auto& [format, file] :
         {std::pair(QString("rawvideo"), pictures), {"s16le", sound}}) {
        const auto name = InputName(command, format);
        if (name > 0) {
            command[name] = file;
        }
    }
    command.last() = destination;
    return command;
}

QString SampleRate(const QStringList& command)
{
    return command.value(command.indexOf("-ar", command.indexOf("s16le")) + 1);
}

qint64 FrameBytes(const QStringList& command)
{
    const QString size = command.value(command.indexOf("-video_size") + 1);
    return size.section('x', 0, 0).toLongLong() * size.section('x', 1).toLongLong() * 3 / 2;
}

double FrameRate(const QStringList& command)
{
    return command.value(command.indexOf("-framerate") + 1).toDouble();
}
