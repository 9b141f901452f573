#pragma once

#include "tests/window/fake_tool.h"

#include <QProcess>

#include <unistd.h>

// The real program, offscreen, in a folder of its own with a scripted `tool`.
class RealProgramTest : public QObject
{
    Q_OBJECT

protected:
    static constexpr uint kUser = 65534; // the user who asks for administrator rights

    // `folder` is the program's own, below a new directory.
    void PrepareProgram(const QString& folder = "program")
    {
        m_directory = std::make_unique<QTemporaryDir>();
        QFile(m_directory->path()).setPermissions(QFile::Permissions(0x7755));
        m_folder = m_directory->filePath(folder);
        m_work = m_directory->filePath("work");
        QVERIFY(QDir().mkdir(m_folder) && QDir().mkdir(m_work));
        QFile(m_work).setPermissions(QFile::Permissions(0x7777));
        QVERIFY(QFile::copy(QString(LUMENFOLD_BIN_DIR) + "/lumenfold-recorder", Recorder()));
        InstallBeside("tool", "#!/bin/sh\nexit 1\n");
        m_program = std::make_unique<QProcess>();
        m_program->setWorkingDirectory(m_work);
    }

    void EndProgram()
    {
        if (m_program->state() != QProcess::NotRunning) {
            m_program->kill();
            m_program->waitForFinished();
        }
    }

    QString Recorder() const { return m_folder + "/recorder"; }
    QString Beside(const QString& name) const { return m_folder + '/' + name; }
    QString Work(const QString& name) const { return m_work + '/' + name; }
    QProcess& Program() { return *m_program; }

    void InstallBeside(const QString& name, const QByteArray& script)
    {
        WriteFile(Beside(name), script);
        QFile::setPermissions(Beside(name), QFile::Permissions(0x7755));
    }

    void Start(const QStringList& arguments)
    {
        m_program->start(Recorder(), arguments);
        QVERIFY(m_program->waitForStarted());
    }

    // Runs as an unprivileged user.
    void StartWithoutRights()
    {
        if (geteuid() == 0) {
            const QString user = QString::number(kUser);
            m_program->start("setpriv",
                             {"--reuid=" + user, "--regid=" + user, "--clear-groups", Recorder()});
        } else {
            m_program->start(Recorder(), {});
        }
        QVERIFY(m_program->waitForStarted());
    }

    QByteArray Log() { return ReadFile(Work("Out.txt")); }

private:
    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_folder;
    QString m_work;
    std::unique_ptr<QProcess> m_program;
};
