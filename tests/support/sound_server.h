// A sound server of a test's own, to be set up as the test wants it and to be ended while it is in
// use.
#pragma once

#include <QProcess>
#include <QTemporaryDir>

class SoundServer
{
public:
    // `setUp`: its start script, one command a line. Whatever this process and its children do with
    // sound from now on is done with this server.
    explicit SoundServer(const QByteArray& setUp);
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;
    ~SoundServer();

    // Starts it, also once more; false when it does not answer.
    bool Start();
    // Ends it at once.
    void Kill();

    // Gives it a command of pactl's; false when it refuses.
    bool Command(const QStringList& words) const;
    // What it answers to one, for instance {"list", "short", "sources"}.
    QString Ask(const QStringList& words) const;

private:
    QTemporaryDir m_folder;
    QProcess m_process;
};
