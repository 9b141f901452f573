#include "jobs/recording_status.h"

#include "jobs/text_codec.h"
#include "util/format.h"

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
