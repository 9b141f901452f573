#include "tests/support/run_program.h"

#include <QProcess>

Outcome RunProgram(const QString& program, const QStringList& arguments, const QString& directory,
                   int milliseconds)
{
    QProcess process;
    process.setWorkingDirectory(directory);
    process.start(program, arguments);
    process.closeWriteChannel();
    if (!process.waitForFinished(milliseconds) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return {-1, process.readAllStandardOutput(),
                process.readAllStandardError() + process.errorString().toUtf8()};
    }
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}
