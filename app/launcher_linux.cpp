#include "app/launcher.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStringList>

#include <cstdio>
#include <pwd.h>
#include <unistd.h>

namespace {

// The user's sound server. libpulse does not find it by itself, because it refuses to use another
// user's runtime directory.
QString SoundServer()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return runtime.isEmpty() ? QString() : "unix:" + runtime + "/pulse/native";
}

// The cookie file that gives access to the user's sound server, or empty if there is none.
QString SoundCookie()
{
    const QString home = QDir::homePath();
    for (const QString& path :
         {qEnvironmentVariable("XDG_CONFIG_HOME", home + "/.config") + "/pulse/cookie",
          home + "/.pulse-cookie"}) {
        if (QFile::exists(path)) {
            return path;
        }
    }
    return {};
}

// The user's message bus, or empty if its address is not that of a socket. One of another kind can
// name a program, which root would start to connect.
QString MessageBus()
{
    QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    for (const QString& place : address.split(';')) {
        if (!place.startsWith("unix:")) {
            return {};
        }
    }
    return address;
}

// What pkexec does not pass on: the user's screen, message bus, sound server, and home directory
// for recordings. Settings and caches of Qt and its libraries stay root's: in the user's home, the
// user's own programs could not write to them.
QStringList UserEnvironment()
{
    QStringList assignments;
    const auto assign = [&assignments](const QString& name, const QString& value) {
        if (!value.isEmpty()) {
            assignments << name + '=' + value;
        }
    };
    for (const char* name :
         {"DISPLAY", "XAUTHORITY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "XDG_CURRENT_DESKTOP"}) {
        assign(name, qEnvironmentVariable(name));
    }
    assign("DBUS_SESSION_BUS_ADDRESS", MessageBus());
    assign("PULSE_SERVER", qEnvironmentVariable("PULSE_SERVER", SoundServer()));
    assign("PULSE_COOKIE", qEnvironmentVariable("PULSE_COOKIE", SoundCookie()));
    assign("HOME", QDir::homePath());
    if (const passwd* root = getpwuid(0)) {
        const QString home = QFile::decodeName(root->pw_dir);
        assign("XDG_CONFIG_HOME", home + "/.config");
        assign("XDG_CACHE_HOME", home + "/.cache");
        assign("XDG_DATA_HOME", home + "/.local/share");
    }
    return assignments;
}

// Whether the process is still pkexec, waiting for the user's answer.
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
    if (program.contains('=')) {
        // env would take the path for a variable assignment and run a program called "start" as
        // root.
        std::fprintf(stderr, "A program whose path has a \"=\" is not started as administrator.\n");
        return;
    }
    // Never freed on purpose: that would end the second instance. pkexec refuses to work if its
    // parent is gone, so the launcher waits until the question is answered.
    auto* pkexec = new QProcess;
    pkexec->setProcessChannelMode(QProcess::ForwardedChannels);
    pkexec->start("pkexec",
                  QStringList("/usr/bin/env") + UserEnvironment() + QStringList{program, "start"});
    if (!pkexec->waitForStarted()) {
        return;
    }
    constexpr int pollMs = 50;
    while (!pkexec->waitForFinished(pollMs) && StillAsks(pkexec->processId())) {
    }
}
