#include "jobs/job_report.h"

namespace {

QString ThroughLatin1(const QString& text)
{
    return QString::fromLatin1(text.toLatin1());
}

} // namespace

OutputMarks MarksIn(const QString& chunk)
{
    return {chunk.contains("frame="), chunk.contains("Invalid data"),
            chunk.contains("No such file")};
}

int CutPercent(int step)
{
    return step * 100 / kTicksPerStep;
}

QString ProgressText(int operation, int percent, const QString& current, const QString& destination)
{
    return "  Process: " + QString::number(percent) +
           (operation == kMergeOperation ? "%\n  Current Merger: " : "%\n  Current Cut: ") +
           ThroughLatin1(current) + "\n  Destination: " + ThroughLatin1(destination);
}

QString SuccessText(int operation, const QString& destination)
{
    return QString(operation == kMergeOperation ? "Merge success, file path is %1 "
                                                : "Cut success, file path is %1 ")
        .arg(destination);
}

QString FailureText(int operation)
{
    return operation == kMergeOperation
               ? "Merge failed, not an valid format, it's better to merge created mp4 files"
               : "Clip failed, not an valid format, it's better to clip created mp4 files";
}

QString NoFreeNameText(int operation)
{
    return QString(operation == kMergeOperation ? "Merge" : "Clip") + " failed, " + kNoFreeName;
}

// "the the" is intended.
QString CancelQuestion(int operation)
{
    return operation == kMergeOperation ? "Are you sure to cancel the the video merge?"
                                        : "Are you sure to cancel the video cut?";
}
