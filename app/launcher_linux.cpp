#include "app/launcher.h"

#include <QFile>
#include <QProcess>
#include <QStringList>

#include <unistd.h>

namespace {

// What a window and the sound need, which pkexec does not pass on by itself.
QStringList DesktopEnvironment()
{
    QStringList assignments;
    for (const char* name :
         {"DISPLAY", "XAUTHORITY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "PULSE_SERVER"}) {
        if (qEnvironmentVariableIsSet(name)) {
            assignments << QString(name) + '=' + qEnvironmentVariable(name);
        }
    }
    return assignments;
}

// Whether the process still is pkexec itself, that is, still asks for the password.
bool StillAsks(qint64 pid)
{
    QFile name(QString("/proc/%1/comm").arg(pid));
    return name.open(QIODevice::ReadOnly) && name.readAll().trimmed() == "pkexec";
}

} // namespace

void RelaunchAsAdministrator(const QString& program)
{
    if (geteuid() == 0) {
        QProcess::startDetached(program, {"start"});
        return;
    }
    // Never freed, and meant to be: freeing it would end the second copy. pkexec refuses to work
    // for a parent that is gone, so the launcher stays until the question is answered.
    auto* pkexec = new QProcess;
    pkexec->setProcessChannelMode(QProcess::ForwardedChannels);
    pkexec->start("pkexec",
                  QStringList("env") + DesktopEnvironment() + QStringList{program, "start"});
    if (!pkexec->waitForStarted()) {
        return;
    }
    constexpr int pollMs = 50;
    while (!pkexec->waitForFinished(pollMs) && StillAsks(pkexec->processId())) {
    }
}
