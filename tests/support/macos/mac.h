// A Mac for the tests: its devices, and the stand-in for its ffmpeg.
#pragma once

#include "tests/support/files.h"

#include <QString>
#include <QTemporaryDir>

// What ffmpeg prints as the devices of this machine; see the folder macos/machines.
inline QString MachineFile(const QString& machine)
{
    return QString(MACOS_SUPPORT "/machines/") + machine;
}

// While it exists, programs that are started find the stand-in as their ffmpeg. The real one is the
// one that LUMENFOLD_FFMPEG has named before, else that of PATH.
class Mac
{
public:
    explicit Mac(const QString& machine) : m_before(qgetenv("LUMENFOLD_FFMPEG"))
    {
        if (!m_before.isEmpty()) {
            qputenv("MAC_FFMPEG", m_before);
        }
        qputenv("LUMENFOLD_FFMPEG", MACOS_SUPPORT "/ffmpeg");
        qputenv("MAC_LOG", QFile::encodeName(LogFile()));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path()));
        Use(machine);
    }
    Mac(const Mac&) = delete;
    Mac& operator=(const Mac&) = delete;
    ~Mac() { qputenv("LUMENFOLD_FFMPEG", m_before); }

    static void Use(const QString& machine)
    {
        qputenv("MAC_MACHINE", QFile::encodeName(MachineFile(machine)));
    }
    QString Path(const QString& name) const { return m_folder.filePath(name); }
    // The captures since the last call: the name and options of each.
    QByteArrayList TakeCaptures() const
    {
        QByteArrayList lines = Content(LogFile()).split('\n');
        QFile::remove(LogFile());
        lines.removeAll("");
        return lines;
    }

private:
    QString LogFile() const { return Path("captures"); }

    QTemporaryDir m_folder;
    QByteArray m_before;
};
