#include "jobs/recording_status.h"

#include "jobs/text_codec.h"
#include "jobs/tool_reason.h"
#include "util/format.h"

namespace {

QString WithFile(const QString& message, const QString& file)
{
    return file.isEmpty() ? message
                          : message + "\nWhat was recorded until then:\n" + PlainLine(file);
}

} // namespace

QString BlinkImage(int& count)
{
    if (count <= 15) {
        ++count;
        return ":/image/rec1.png";
    }
    if (count <= 30) {
        ++count;
        return ":/image/rec2.png";
    }
    count = 0;
    return {};
}

quint32 ElapsedMs(quint32 start, quint32 now)
{
    return now - start;
}

QString RecordingStatus(quint32 elapsedMs, qint64 fileBytes)
{
    return "Recording... \n\n" + FromEightBit(GetTimeStringA(elapsedMs / 1000)) + "\n\n" +
           FromEightBit(GetFileSizeString(fileBytes));
}

QString RecordingFailure(int result)
{
    return result == kStoppedForSpace ? "Not enough space, recording stopped."
                                      : "Record failed. Create mp4 file failed.";
}

QString StartFailure(bool started, const QString& processError, bool finishing)
{
    if (!started) {
        // "execvp: No such file or directory" does not say which file.
        return "tool: " + processError.section(": ", -1);
    }
    return finishing ? "the recording before it was still being finished" : QString();
}

QString StartFailureText(const QString& reason)
{
    return "The recording could not be started: " + reason;
}

QString EndText(const QString& reason, const QString& file)
{
    return WithFile("The recording has ended by itself: " + reason, file);
}

QString StandstillText(int seconds, const QString& file)
{
    return WithFile(
        QString("The recording has come to a halt: nothing has been written for %1 s").arg(seconds),
        file);
}

QString NoFileText(const QString& file, const QString& reason)
{
    const QString message = "The recording's file is missing or empty: " + PlainLine(file);
    return reason.isEmpty() ? message : message + '\n' + reason;
}

QString UnsaidReason(bool killed, int exitCode)
{
    if (killed) {
        return "tool was killed or has crashed";
    }
    return exitCode == 0 ? QString("tool did not say why")
                         : QString("tool ended with code %1 and did not say why").arg(exitCode);
}
