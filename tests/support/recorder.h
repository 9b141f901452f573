// The real program in a folder of its own, with its own home, settings file and `tool`, driven from
// outside.
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
    // The window in place of the tray icon.
    static constexpr auto kStandIn = "Recording";
    static constexpr double kStop = 0.25; // of its width
    static constexpr double kShowWindow = 0.75;

    // Copies the program without starting it.
    explicit Recorder(Desktop& desktop);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    // Ends the program and everything it started.
    ~Recorder();

    // Paths: beside the program; the working directory with "Out.txt"; where recordings go.
    QString Beside(const QString& name) const;
    QString ErrorFile() const;
    QString SaveDirectory() const;

    // Call before the start: the program waits kShortToolWaitMs for the tool instead of 30 s, and
    // the tool leaves its jobs to the background a second before that.
    void UseShortToolWait();
    // Call before the start: installs a script as `tool`. $REAL in it is the original.
    void ReplaceTool(const QByteArray& script);
    // Writes the settings file in the program's own format.
    void SetSaveDirectory(const QString& directory);
    void SetEnvironment(const QString& name, const QString& value);

    // Starts the program and waits for its window. Returns false if it does not appear.
    bool Start();
    // The same without the argument "start".
    bool StartAsLauncher();
    // The same, then goes to the record page.
    bool StartOnRecordPage();
    bool IsRunning();
    // Waits until it ends. Returns the exit code, or -1 on a timeout.
    int WaitForEnd(int milliseconds = 20000);

    bool IsShown() const;
    bool WaitShown() const;
    bool WaitHidden() const;
    // Clicks a widget of scripts/ui-positions.
    void Click(const QString& widget, int times = 1);
    // Clicks an entry of the home page, "cut" or "merge", and waits until its folder has been read
    // and the page is shown.
    bool OpenPage(const QString& page);
    // Clicks at a fraction of the way between two places of scripts/ui-positions.
    void ClickBetween(const QString& from, const QString& to, double share);
    // Clicks a row, counted from 0, of the table whose first row is at the place.
    void ClickRow(const QString& firstRow, int row);
    // Answers the open folder chooser.
    bool ChooseFolder(const QString& folder);
    // Chooses an entry of the combo box, counted from 0.
    void ChooseAudio(int entry);

    // Clicks Record and waits until the window is hidden and the file grows.
    bool StartRecording();
    // Goes from the home page to the record page and clicks Record. Repeats clicks that a desktop
    // of Wayland's loses while the window is new, as a user would.
    bool PressRecordUntilHidden();
    // Waits until it has lasted this long since StartRecording().
    bool RecordFor(int milliseconds);
    // Waits until `tool` has ended.
    bool WaitForTool(int milliseconds = 15000);
    bool ToolRuns() const;
    // The ffmpeg that records, or 0.
    pid_t Ffmpeg() const;
    // Cleans up: closes a message, stops a recording, waits for its file.
    bool BringToRest();

    // The tray icon, once it has settled.
    bool WaitTrayIcon();
    QPoint TrayIcon() const;
    // The program's message dialog, if one is open, and a click on its OK button.
    std::optional<DesktopWindow> Message() const;
    void AnswerMessage(); // clicks its OK
    bool CloseMessage();
    // Whether the tray icon shows a notification.
    bool HasNotification() const;
    // Right-clicks the icon and chooses a menu entry: 0 Pause, 1 Stop or Start, 2 Quit.
    bool ChooseInTray(int entry);
    // Clicks a button of the window in place of the icon: kStop or kShowWindow.
    bool ClickInStandIn(double share);

    // The recordings in the save directory, and the only or newest one.
    QStringList Recordings() const;
    QString Recording() const;

    // The output of the program and `tool`, for messages.
    QString Log() const;
    qint64 Pid() const { return m_process.processId(); }
    // Milliseconds from the click on Record to the last menu choice, and from that to now.
    qint64 RecordedMs() const { return m_sinceRecord.elapsed() - m_sinceChoice.elapsed(); }
    qint64 MsSinceChoice() const { return m_sinceChoice.elapsed(); }

private:
    bool StartWith(const QStringList& arguments);
    void ClickInWindow(QPoint place, int times = 1);
    QList<pid_t> Children() const;
    void EndEverything();
    QList<DesktopWindow> Unmanaged() const;
    std::optional<DesktopWindow> Menu() const;

    Desktop& m_desktop;
    QTemporaryDir m_folder;
    QString m_saveDirectory;
    QProcess m_process;
    QProcessEnvironment m_environment;
    QElapsedTimer m_sinceRecord;
    QElapsedTimer m_sinceChoice;
};
