// The desktop's portal in a session of scripts/wayland-desktop --portal.
#pragma once

#include "tests/support/files.h"
#include "tests/support/run_program.h"

#include <QDir>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

class PortalSession
{
public:
    // Makes `tool` use the portal, and keep its tokens in a folder of this object.
    PortalSession()
    {
        const auto user =
            static_cast<uid_t>(qEnvironmentVariableIntValue("LUMENFOLD_SESSION_USER"));
        QDir().mkdir(State());
        [[maybe_unused]] const int owned = chown(qPrintable(State()), user, static_cast<gid_t>(-1));
        chmod(qPrintable(m_folder.path()), 0711);
        qputenv("XDG_STATE_HOME", State().toUtf8());
        qputenv("LUMENFOLD_USE_PORTAL", "1");
    }

    QString Path(const QString& name) const { return m_folder.filePath(name); }
    QString State() const { return Path("state"); }
    QString Tokens() const { return State() + "/lumenfold-recorder"; }

    // The person's answers from now on: shell commands that print the name of an output, or nothing
    // to decline. Nobody has been asked yet.
    void Answer(const QByteArray& commands) const
    {
        QFile::remove(State() + "/asked");
        Write(qEnvironmentVariable("LUMENFOLD_CHOOSER"),
              "echo >>" + QFile::encodeName(State()) + "/asked\n" + commands + '\n');
    }
    // A person who does not answer until Release().
    void AnswerLater() const
    {
        QFile::remove(State() + "/release");
        Answer("cd " + QFile::encodeName(State()) +
               "; while [ -e asked ] && [ ! -e release ]; do sleep 0.05; done");
    }
    void Release() const { Write(State() + "/release", {}); }
    // How often a person has been asked since.
    qsizetype Questions() const { return Content(State() + "/asked").size(); }

    // Changes an output of the compositor.
    static bool Change(const QStringList& command)
    {
        return RunProgram("swaymsg", QStringList{"-q", "output"} + command).code == 0;
    }

private:
    QTemporaryDir m_folder;
};
