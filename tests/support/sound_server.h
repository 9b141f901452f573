// A sound server of a test's own, with its own configuration, which the test can kill while it is
// in use.
#pragma once

#include <QProcess>
#include <QTemporaryDir>

class SoundServer
{
public:
    // `setUp`: its start script, one command per line. From now on this process and its children
    // use this server.
    explicit SoundServer(const QByteArray& setUp);
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;
    ~SoundServer();

    // Starts or restarts it. Returns false if it does not answer.
    bool Start();
    // Kills it.
    void Kill();

    // Runs a pactl command. Returns false if the server refuses it.
    bool Command(const QStringList& words) const;
    // The output of a pactl command, such as {"list", "short", "sources"}.
    QString Ask(const QStringList& words) const;

private:
    QTemporaryDir m_folder;
    QProcess m_process;
};
