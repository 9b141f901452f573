// A merge that takes seconds, and a user who does not wait for it.
#include "tests/support/desktop_test.h"
#include "tests/support/editing.h"

#include <QTest>

#include <csignal>

class JobDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void cancelInTheMiddleLeavesNothingBehind();
    void closeInTheMiddleLeavesNothingBehind_data();
    void closeInTheMiddleLeavesNothingBehind();
    void theWindowClosesWhileAFolderDoesNotAnswer();

private:
    void StartMerge(Recorder& recorder);
    std::optional<DesktopWindow> Progress() const;
    void CloseWindow();
};

// Without a title of its own, but nothing else has this size.
std::optional<DesktopWindow> JobDesktopTest::Progress() const
{
    for (const DesktopWindow& window : m_desktop.Windows()) {
        if (window.visible && window.title == Recorder::kTitle &&
            window.place.size() == QSize(500, 250)) {
            return window;
        }
    }
    return std::nullopt;
}

// Two movies of different sizes, so that the join encodes.
void JobDesktopTest::StartMerge(Recorder& recorder)
{
    QVERIFY(MakeMovie(recorder, "1.mp4", 200, kPlain, true, "640x480"));
    QVERIFY(MakeMovie(recorder, "2.mp4", 200, kPlain, true, "320x240"));
    const QString target = recorder.SaveDirectory() + "/merged";
    QVERIFY(QDir().mkpath(target));
    QVERIFY(recorder.Start());
    AddVideos(recorder, 2);
    recorder.Click("merge.merge");
    QVERIFY(recorder.ChooseFolder(target));
    QVERIFY2(WaitUntil([&] { return Progress() && FileNames(target).size() >= 2; }),
             "the merge does not begin");
}

void JobDesktopTest::cancelInTheMiddleLeavesNothingBehind()
{
    Recorder recorder(m_desktop);
    StartMerge(recorder);
    if (QTest::currentTestFailed()) {
        return;
    }
    m_desktop.Click(Progress()->place.topLeft() + QPoint(250, 225));
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }, 2000),
             "Cancel is not heard while the tool runs");
    const QString shots = qEnvironmentVariable("LUMENFOLD_SCREENSHOTS");
    if (!shots.isEmpty()) {
        m_desktop.Screenshot(shots + "/cancel-question.png");
    }
    QVERIFY2(recorder.ToolRuns(), "the merge was over too soon");
    m_desktop.Click(recorder.Message()->place.topLeft() + QPoint(240, 127)); // OK
    QVERIFY2(WaitUntil([&] { return !Progress(); }, 2000), "OK does not close the dialog");
    QVERIFY2(WaitUntil([&] { return !recorder.ToolRuns(); }, 2000), "the tool goes on");
    for (int message = 0; message < 2 && recorder.Message(); ++message) {
        m_desktop.Press({"Return"});
        QVERIFY(WaitUntil([&] { return !recorder.Message() || message == 0; }));
    }
    QTRY_COMPARE(FileNames(recorder.SaveDirectory() + "/merged"), QStringList());
    QVERIFY(recorder.IsShown());
}

void JobDesktopTest::closeInTheMiddleLeavesNothingBehind_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("close button") << 0;
    QTest::newRow("SIGTERM") << SIGTERM;
}

void JobDesktopTest::closeInTheMiddleLeavesNothingBehind()
{
    QFETCH(int, signal);
    Recorder recorder(m_desktop);
    StartMerge(recorder);
    if (QTest::currentTestFailed()) {
        return;
    }
    QElapsedTimer time;
    time.start();
    if (signal != 0) {
        QCOMPARE(kill(static_cast<pid_t>(recorder.Pid()), signal), 0);
    } else {
        CloseWindow();
    }
    QCOMPARE(recorder.WaitForEnd(), 0);
    QVERIFY2(time.elapsed() < 2000, qPrintable(QString("it took %1 ms").arg(time.elapsed())));
    QCOMPARE(FileNames(recorder.SaveDirectory() + "/merged"), QStringList());
}

void JobDesktopTest::CloseWindow()
{
    for (const DesktopWindow& window : m_desktop.Windows()) {
        if (window.title == Recorder::kTitle && window.place.size() == QSize(1000, 600)) {
            m_desktop.Close(window.id);
        }
    }
}

// The thread that reads it never comes back.
void JobDesktopTest::theWindowClosesWhileAFolderDoesNotAnswer()
{
    Recorder recorder(m_desktop);
    recorder.SetEnvironment("LD_PRELOAD", DEAD_FOLDER_PRELOAD);
    recorder.SetEnvironment("LUMENFOLD_DEAD_FOLDER", recorder.SaveDirectory());
    QVERIFY(recorder.Start());
    recorder.Click("home.cut");
    QVERIFY2(WaitUntil([&] { return recorder.Log().contains("/ScreenSave/\""); }),
             "the folder is not read");
    QElapsedTimer time;
    time.start();
    CloseWindow();
    QCOMPARE(recorder.WaitForEnd(), 0);
    QVERIFY2(time.elapsed() < 2000, qPrintable(QString("it took %1 ms").arg(time.elapsed())));
    QVERIFY2(!QFile::exists(recorder.ErrorFile()), "it did not end normally");
}

QTEST_GUILESS_MAIN(JobDesktopTest)
#include "job_desktop_test.moc"
