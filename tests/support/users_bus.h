#pragma once

#include <QDir>
#include <QFile>
#include <QProcess>

#include <sys/stat.h>
#include <unistd.h>

// The session bus of a user, for tests of root after pkexec, and what is called on it. A bus lets
// nobody in but the user it belongs to. Only root can start one.
class UsersBus
{
public:
    UsersBus() = default;
    UsersBus(const UsersBus&) = delete;
    UsersBus& operator=(const UsersBus&) = delete;
    ~UsersBus()
    {
        for (QProcess* process : {&m_monitor, &m_bus}) {
            process->terminate();
            process->waitForFinished();
        }
    }

    // Makes a runtime directory in this folder, which others may enter from now on. Listens to
    // calls of the method. Returns false on failure.
    bool Start(const QString& folder, const QString& method)
    {
        m_runtime = folder + "/runtime";
        const QString address = "unix:path=" + m_runtime + "/bus";
        return QDir().mkdir(m_runtime) && chown(QFile::encodeName(m_runtime), kUser, kUser) == 0 &&
               chmod(QFile::encodeName(folder), 0711) == 0 &&
               StartAsUser(m_bus, {"dbus-daemon", "--session", "--nofork", "--print-address",
                                   "--address=" + address}) &&
               StartAsUser(m_monitor,
                           {"dbus-monitor", "--address", address, "member='" + method + '\''});
    }
    QByteArray RuntimeDirectory() const { return QFile::encodeName(m_runtime); }
    // Whether a call has had this text until now. Waits 0.1 s at most.
    bool HasHeard(const QByteArray& text)
    {
        m_monitor.waitForReadyRead(100);
        m_heard += m_monitor.readAll();
        return m_heard.contains(text);
    }

private:
    static constexpr uid_t kUser = 65534; // nobody

    static bool StartAsUser(QProcess& process, const QStringList& command)
    {
        const QString id = QString::number(kUser);
        process.start("setpriv",
                      QStringList{"--reuid", id, "--regid", id, "--clear-groups"} + command);
        return process.waitForReadyRead();
    }

    QString m_runtime;
    QProcess m_bus;
    QProcess m_monitor;
    QByteArray m_heard;
};
