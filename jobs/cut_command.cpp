#include "jobs/cut_command.h"

#include "jobs/path_argument.h"

QString CutDestination(const QString& directory, const QString& source)
{
    return directory + "/Cut_" + source.mid(source.lastIndexOf('/') + 1);
}

// The double blanks around the times are intended. Start and length come after the input, as
// output options.
QString CutCommand(const QString& tool, const QString& source, qint64 start, qint64 end,
                   const QString& destination)
{
    return tool + " -i " + Quoted(source) + "  -ss " + QString::number(start) + " -t " +
           QString::number(end - start) + " -codec copy  " + Quoted(destination) + ' ';
}
