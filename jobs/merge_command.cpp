#include "jobs/merge_command.h"

#include "jobs/job_report.h"
#include "jobs/path_argument.h"
#include "jobs/record_command.h"

QString MergeDestination(const QString& directory, const QDateTime& time)
{
    return directory + "/Merge_" + FileStamp(time) + ".mp4";
}

QString IntermediatePath(const QString& directory, int number)
{
    return directory + '/' + QString::number(number) + ".ts";
}

QString ChangeToTSCommand(const QString& tool, const QString& input, const QString& stream)
{
    return tool + " -i " + Quoted(input) + " -vcodec copy -acodec copy -vbsf h264_mp4toannexb " +
           Quoted(stream) + ' ';
}

// A separator follows every stream, the last one included. This is intended.
QString ConcatCommand(const QString& tool, const QStringList& streams, const QString& output)
{
    QString list = "concat:";
    for (const QString& stream : streams) {
        list += stream + '|';
    }
    return tool + " -i " + Quoted(list) + " -acodec copy -vcodec copy -absf aac_adtstoasc " +
           Quoted(output);
}

qint64 MergeTicks(qsizetype files)
{
    return kTicksPerStep * files + kTicksPerStep;
}

int MergePercent(qint64 position, qint64 total)
{
    return total <= 0 ? 0 : static_cast<int>(position * 100 / total);
}
