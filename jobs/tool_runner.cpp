#include "jobs/tool_runner.h"

#include "jobs/path_argument.h"

#include <QCoreApplication>
#include <QDebug>
#include <QProcess>

QString ToolPrefix()
{
    return Quoted(QCoreApplication::applicationDirPath() + "/tool");
}

bool StartTool(QProcess& process, const QString& command)
{
    qDebug() << command;
    process.startCommand(command, QIODevice::ReadWrite);
    return process.waitForStarted(kToolWaitMs);
}

void RunTool(QProcess& process, const QString& command)
{
    StartTool(process, command);
    process.waitForFinished(kToolWaitMs);
}

void AskToolToQuit(QProcess& process)
{
    if (process.isOpen()) {
        process.write("q\r\n", 3);
    }
}

QString ReadToolText(QProcess& process)
{
    if (!process.isOpen()) { // never started: the cut reads another job's process
        return {};
    }
    // The pointer form stops at a zero byte; the QByteArray form would not.
    return QString::fromLatin1(process.readAllStandardOutput().constData());
}
