// The real program in a folder of its own, with a home, a settings file and a `tool` that belong to
// one test, driven from outside.
#pragma once

#include "tests/support/desktop.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

class Recorder
{
public:
    static constexpr auto kTitle = "Lumenfold Screen Recorder";

    // Copies the program; nothing runs yet.
    explicit Recorder(Desktop& desktop);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    // Ends the program and what it started, however that went.
    ~Recorder();

    // Beside the program; the working directory, where "Out.txt" lies; where recordings go.
    QString Beside(const QString& name) const;
    QString ErrorFile() const;
    QString SaveDirectory() const;

    // Before the start. A script as `tool`; $REAL in it is the one that was there.
    void ReplaceTool(const QByteArray& script);
    // Written as the program writes it.
    void SetSaveDirectory(const QString& directory);
    void SetEnvironment(const QString& name, const QString& value);

    // Starts it and waits until its window is shown; false if that does not come.
    bool Start();
    // The same, without the argument that asks for the window at once.
    bool StartAsLauncher();
    // The same, up to the record page.
    bool StartOnRecordPage();
    bool IsRunning();
    // Waits for its end; the exit code, or -1 when it did not end by itself in time.
    int WaitForEnd(int milliseconds = 20000);

    bool IsShown() const;
    bool WaitShown() const;
    bool WaitHidden() const;
    // On a widget of scripts/ui-positions.
    void Click(const QString& widget, int times = 1);
    // At a share of the way from one place of scripts/ui-positions to another.
    void ClickBetween(const QString& from, const QString& to, double share);
    // On a row of the table whose first row the place is in, counted from 0.
    void ClickRow(const QString& firstRow, int row);
    // Answers the folder chooser that has been asked for.
    bool ChooseFolder(const QString& folder);
    // Of the combo box's entries, from 0 on.
    void ChooseAudio(int entry);

    // Presses Record and waits until the window is hidden and the file grows.
    bool StartRecording();
    // Waits until it lasted so long, counted from StartRecording.
    bool RecordFor(int milliseconds);
    // Waits until `tool` has ended.
    bool WaitForTool(int milliseconds = 15000);
    bool ToolRuns() const;
    // Closes a message, stops a recording, waits for its file: whatever is due.
    bool BringToRest();

    // The tray icon, as soon as it stands.
    bool WaitTrayIcon();
    QPoint TrayIcon() const;
    // The program's own message dialog, if one is shown, and a click on its OK.
    std::optional<DesktopWindow> Message() const;
    bool CloseMessage();
    // Right click on the icon, then a click on the entry: 0 Pause, 1 Stop or Start, 2 Quit.
    bool ChooseInTray(int entry);

    // Recordings in the save directory, and the only or newest one.
    QStringList Recordings() const;
    QString Recording() const;

    // What the program and `tool` wrote, for messages.
    QString Log() const;
    qint64 Pid() const { return m_process.processId(); }
    // From the click on Record to the last one in the tray's menu, and from that to now.
    qint64 RecordedMs() const { return m_sinceRecord.elapsed() - m_sinceChoice.elapsed(); }
    qint64 MsSinceChoice() const { return m_sinceChoice.elapsed(); }

private:
    bool StartWith(const QStringList& arguments);
    void ClickInWindow(QPoint place, int times = 1);
    QList<qint64> Children() const;
    void EndEverything();
    std::optional<DesktopWindow> Menu() const;

    Desktop& m_desktop;
    QTemporaryDir m_folder;
    QString m_saveDirectory;
    QProcess m_process;
    QProcessEnvironment m_environment;
    QElapsedTimer m_sinceRecord;
    QElapsedTimer m_sinceChoice;
};
