#include "tests/support/recorder.h"

#include "tests/support/child_processes.h"
#include "tests/support/files.h"

#include <QFile>
#include <QSettings>
#include <QTest>

#include <csignal>

namespace {

void Copy(const QString& from, const QString& to)
{
    QVERIFY2(QFile::copy(from, to), qPrintable(from + " cannot be copied to " + to));
}

} // namespace

Recorder::Recorder(Desktop& desktop)
    : m_desktop(desktop),
      m_environment(QProcessEnvironment::systemEnvironment())
{
    for (const char* name : {"bin", "bin/help", "home", "work"}) {
        QVERIFY(QDir(m_folder.path()).mkdir(name));
    }
    for (const char* name : {"lumenfold-recorder", "tool"}) {
        Copy(QString(LUMENFOLD_BIN_DIR "/") + name, Beside(name));
    }
    m_saveDirectory = m_folder.filePath("home/ScreenSave");
    SetEnvironment("HOME", m_folder.filePath("home"));
    m_process.setWorkingDirectory(m_folder.filePath("work"));
}

Recorder::~Recorder()
{
    if (QTest::currentTestFailed()) {
        const QString picture = QString(FAILURES_DIR "/") + QTest::currentTestFunction() + '-' +
                                QTest::currentDataTag() + ".png";
        QDir().mkpath(FAILURES_DIR);
        m_desktop.Screenshot(picture);
        qWarning("The screen at the failure: %s\n%s", qPrintable(picture), qPrintable(Log()));
    }
    EndEverything();
    m_process.waitForFinished();
}

// All processes that run from the test's folder or work in it, including second copies and ffmpeg.
void Recorder::EndEverything()
{
    const QString folder = m_folder.path() + '/';
    for (const QString& pid : QDir("/proc").entryList({"[0-9]*"}, QDir::Dirs)) {
        for (const char* link : {"exe", "cwd"}) {
            if (QFile::symLinkTarget("/proc/" + pid + '/' + link).startsWith(folder)) {
                kill(pid.toInt(), SIGKILL);
            }
        }
    }
}

QString Recorder::Beside(const QString& name) const
{
    return m_folder.filePath("bin/" + name);
}

QString Recorder::ErrorFile() const
{
    return m_folder.filePath("work/Out.txt");
}

QString Recorder::SaveDirectory() const
{
    return m_saveDirectory;
}

void Recorder::UseShortToolWait()
{
    QVERIFY(QFile::remove(Beside("lumenfold-recorder")));
    Copy(HASTY_RECORDER, Beside("lumenfold-recorder"));
    const QString tool = Beside(QFile::exists(Beside("real-tool")) ? "real-tool" : "tool");
    QVERIFY(QFile::remove(tool));
    Copy(HASTY_TOOL, tool);
}

void Recorder::ReplaceTool(const QByteArray& script)
{
    QVERIFY(QFile::rename(Beside("tool"), Beside("real-tool")));
    QVERIFY(WriteProgram(Beside("tool"), "#!/bin/bash\nREAL=\"${0%/*}/real-tool\"\n" + script));
}

void Recorder::SetSaveDirectory(const QString& directory)
{
    m_saveDirectory = directory;
    QSettings(Beside("ScreenRecord.ini"), QSettings::IniFormat)
        .setValue("/screen_record/save_path", directory);
}

void Recorder::SetEnvironment(const QString& name, const QString& value)
{
    m_environment.insert(name, value);
}

bool Recorder::Start()
{
    return StartWith({"start"});
}

bool Recorder::StartAsLauncher()
{
    return StartWith({});
}

bool Recorder::StartWith(const QStringList& arguments)
{
    m_process.setProcessEnvironment(m_environment);
    m_process.start(Beside("lumenfold-recorder"), arguments);
    return m_process.waitForStarted() && WaitShown();
}

bool Recorder::StartOnRecordPage()
{
    if (!Start()) {
        return false;
    }
    Click("home.record");
    return true;
}

bool Recorder::IsRunning()
{
    m_process.waitForFinished(0);
    return m_process.state() == QProcess::Running;
}

int Recorder::WaitForEnd(int milliseconds)
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(milliseconds)) {
        return -1;
    }
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

bool Recorder::IsShown() const
{
    return m_desktop.Shown(kTitle).has_value();
}

bool Recorder::WaitShown() const
{
    return WaitUntil([this] { return IsShown(); });
}

bool Recorder::WaitHidden() const
{
    return WaitUntil([this] { return !IsShown(); });
}

bool Recorder::StartRecording()
{
    Click("record.record");
    m_sinceRecord.start();
    return WaitHidden() && WaitUntil([this] { return QFileInfo(Recording()).size() > 0; });
}

bool Recorder::PressRecordUntilHidden()
{
    constexpr int tries = 4;
    constexpr int patienceMs = 4000;
    for (int i = 0; i < tries && IsShown(); ++i) {
        Click("home.record"); // on the record page there is nothing at this place
        Click("record.record");
        WaitUntil([this] { return !IsShown(); }, patienceMs);
    }
    return !IsShown();
}

bool Recorder::RecordFor(int milliseconds)
{
    return WaitUntil([&] { return m_sinceRecord.hasExpired(milliseconds); }, milliseconds + 1000);
}

bool Recorder::WaitForTool(int milliseconds)
{
    return WaitUntil([this] { return !ToolRuns(); }, milliseconds);
}

bool Recorder::ToolRuns() const
{
    return !Children().isEmpty();
}

bool Recorder::BringToRest()
{
    return WaitUntil([this] {
        if (Message()) {
            CloseMessage();
        } else if (!IsShown()) {
            ChooseInTray(1);
        } else {
            return !ToolRuns();
        }
        return false;
    });
}

std::optional<DesktopWindow> Recorder::Message() const
{
    return m_desktop.Shown("Tarvessa Data Tool");
}

void Recorder::AnswerMessage()
{
    if (const auto box = Message()) {
        // Its button is on the bar at the bottom, a third from the left.
        m_desktop.Click(box->place.bottomLeft() + QPoint(box->place.width() / 3 + 40, -22));
    }
}

bool Recorder::CloseMessage()
{
    AnswerMessage();
    return WaitUntil([this] { return !Message(); });
}

pid_t Recorder::Ffmpeg() const
{
    const QString folder = m_folder.path() + '/';
    for (const QString& pid : QDir("/proc").entryList({"[0-9]*"}, QDir::Dirs)) {
        if (QFile::symLinkTarget("/proc/" + pid + "/cwd").startsWith(folder) &&
            QFile::symLinkTarget("/proc/" + pid + "/exe").endsWith("/ffmpeg")) {
            return pid.toInt();
        }
    }
    return 0;
}

QList<pid_t> Recorder::Children() const
{
    return ChildrenOf(m_process.processId());
}

QStringList Recorder::Recordings() const
{
    QStringList files;
    for (const QString& name :
         QDir(m_saveDirectory).entryList({"*.mp4"}, QDir::Files, QDir::Name)) {
        files << m_saveDirectory + '/' + name;
    }
    return files;
}

QString Recorder::Recording() const
{
    return Recordings().value(static_cast<int>(Recordings().size()) - 1);
}

QString Recorder::Log() const
{
    QFile file(ErrorFile());
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.read(20000))
                                          : QString("no Out.txt");
}
