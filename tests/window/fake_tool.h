#pragma once

#include "tests/window/find_widget.h"
#include "ui/drui.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedLayout>
#include <QTemporaryDir>
#include <QTest>

// Shared by the window tests: a scripted `tool` beside the test program, which records how it is
// called and behaves like the real one, and a window that uses it.

inline QString BesideProgram(const QString& name)
{
    return QCoreApplication::applicationDirPath() + '/' + name;
}

inline void WriteFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate),
             qPrintable("cannot write " + path));
    file.write(content);
}

inline QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void InstallTool(const QByteArray& script)
{
    QFile::remove(BesideProgram("tool"));
    WriteFile(BesideProgram("tool"), script);
    QFile::setPermissions(BesideProgram("tool"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

// Prints the file "listing", or "records" to its last argument: a line of progress every tenth of a
// second until "q" is typed. The keys it reads go to "keys".
inline constexpr auto kRecordingTool = R"(#!/bin/bash
here=$(dirname "$0")
if [[ "$*" == *-list_devices* ]]; then cat "$here/listing" >&2; exit 1; fi
printf '%s\n' "$@" >"$here/arguments"
printf 'x' >>"$here/starts"
: >"${!#}"
key=
until [[ $key == q ]]; do
    printf 'frame=    1\r' >&2
    printf 'data' >>"${!#}" 2>/dev/null
    read -r -t 0.1 -N 1 key # may have read a key although it timed out
    [[ -n $key ]] && printf '%s' "$key" >>"$here/keys"
done
printf 'finished' >"$here/finished"
)";

inline constexpr auto kTwoSoundDevices = "[AVFoundation indev @ 0x1] AVFoundation video devices:\n"
                                         "[AVFoundation indev @ 0x1] [1] Capture screen 0\n"
                                         "[AVFoundation indev @ 0x1] AVFoundation audio devices:\n"
                                         "[AVFoundation indev @ 0x1] [0] Built-in Microphone\n"
                                         "[AVFoundation indev @ 0x1] [2] Loopback\n";

class WindowTest : public QObject
{
    Q_OBJECT

protected:
    // A new folder for the recordings, the recording tool, and only the save directory in the
    // settings.
    void Prepare()
    {
        m_directory = std::make_unique<QTemporaryDir>();
        for (const char* name : {"arguments", "starts", "keys", "finished", "ScreenRecord.ini"}) {
            QFile::remove(BesideProgram(name));
        }
        InstallTool(kRecordingTool);
        WriteFile(BesideProgram("listing"), kTwoSoundDevices);
        WriteFile(BesideProgram("ScreenRecord.ini"),
                  "[screen_record]\nsave_path=" + m_directory->path().toUtf8() + "/Save\n");
        DRUI::m_bIsStart = false;
        DRUI::m_bIsPause = false;
        DRUI::m_nRecorderRet = 0;
    }

    DRUI& OpenWindow()
    {
        m_window = std::make_unique<DRUI>();
        m_window->Init();
        m_window->show();
        return *m_window;
    }

    void CloseWindow() { m_window.reset(); }

    DRUI& Window() { return *m_window; }

    template <class T>
    T* Child(const char* name)
    {
        return m_window->findChild<T*>(name);
    }

    // Clicks the button with this text.
    void Press(const QString& text) { PressButton(m_window.get(), text); }

    // The middle of this button, in the window.
    QPoint MiddleOf(const QString& button)
    {
        const auto* found = VisibleButton(m_window.get(), button);
        return found == nullptr ? QPoint() : found->mapTo(m_window.get(), found->rect().center());
    }

    void Call(const char* slot) { QVERIFY(QMetaObject::invokeMethod(m_window.get(), slot)); }

    int Page() { return m_window->findChild<QStackedLayout*>("m_pStack")->currentIndex(); }

    void EnterRecordPage()
    {
        OpenWindow();
        Call("btnSlot");
    }

    QString SaveDirectory() { return m_directory->path() + "/Save"; }

    QStringList Recordings() { return QDir(SaveDirectory()).entryList({"*.mp4"}, QDir::Files); }

    QStringList ToolArguments()
    {
        return QString::fromUtf8(ReadFile(BesideProgram("arguments")))
            .split('\n', Qt::SkipEmptyParts);
    }

private:
    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<DRUI> m_window;
};
