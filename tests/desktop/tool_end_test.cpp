// Recordings that are stopped by something other than a key, or that lose one of the processes
// beside ffmpeg. All recordings of a test run at once, on a small screen.
#include "tests/support/ordinary_movie.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr int kHelpers = 5;     // keeper, key feeder and its guard, screen feeder, sound feeder
constexpr double kBefore = 1.5; // seconds recorded before something happens

// The keeper: a child of ffmpeg that has the file open, or 0.
pid_t Keeper(const Take& take)
{
    for (const pid_t helper : take.Children()) {
        const QString folder = QString("/proc/%1/fd").arg(helper);
        for (const QString& file : QDir(folder).entryList(QDir::Files | QDir::System)) {
            if (QFile::symLinkTarget(folder + '/' + file) == take.Path()) {
                return helper;
            }
        }
    }
    return 0;
}

double SecondsIn(const QString& path)
{
    return static_cast<double>(PictureDigests(path).size()) / 29.97;
}

// The last line ffmpeg prints when it has written everything.
bool IsFinished(const Take& take)
{
    return take.Text().contains("muxing overhead");
}

} // namespace

class ToolEndTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void signalEndsTheRecordingAsAKeyDoes();
    void endOfTheKeyboardEndsTheRecording();
    void stopWorksWhateverHelperIsKilled();
    void keeperSettlesNothingBeforeTheEnd();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    struct Case
    {
        QByteArray name;
        std::function<void(Take&)> act;
        std::unique_ptr<Take> take = {};
        double before = 0; // seconds ffmpeg had read
    };
    void RunAll(std::vector<Case>& cases, const QString& name);

    QTemporaryDir m_folder;
    TestPatternProcess m_pattern{QStringList{"--rate", "30"}};
};

void ToolEndTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    QVERIFY2(m_pattern.IsReady(), "the test pattern does not start");
    RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", ""});
}

// Starts them all, performs the action on each, and waits for their ends.
void ToolEndTest::RunAll(std::vector<Case>& cases, const QString& name)
{
    for (size_t i = 0; i < cases.size(); ++i) {
        cases[i].take =
            std::make_unique<Take>(m_folder.filePath(QString("%1 %2.mp4").arg(name).arg(i)), "0:1");
    }
    for (Case& one : cases) {
        QTRY_VERIFY2_WITH_TIMEOUT(one.take->Taken() >= kBefore, one.take->Text(), 60000);
    }
    for (Case& one : cases) {
        QVERIFY2(one.take->Helpers().size() == kHelpers,
                 one.name + ": " + QByteArray::number(one.take->Helpers().size()) + " helpers");
        one.before = one.take->Taken();
        one.act(*one.take);
    }
    for (Case& one : cases) {
        QTRY_VERIFY2_WITH_TIMEOUT(IsFinished(*one.take), one.name + ": " + one.take->Text(), 20000);
    }
}

void ToolEndTest::signalEndsTheRecordingAsAKeyDoes()
{
    std::vector<Case> cases;
    for (const int signal : {SIGTERM, SIGHUP}) {
        const QByteArray name = signal == SIGTERM ? "SIGTERM to " : "SIGHUP to ";
        cases.push_back({name + "ffmpeg", [=](Take& take) { take.EndFfmpeg(signal); }});
        cases.push_back({name + "all at once", [=](Take& take) { take.EndAll(signal); }});
        cases.push_back({name + "the recorder", [=](Take& take) { take.EndRecorder(signal); }});
        for (int helper = 0; helper < kHelpers; ++helper) {
            cases.push_back({name + "helper " + QByteArray::number(helper),
                             [=](Take& take) { kill(take.Helpers().at(helper), signal); }});
        }
    }
    RunAll(cases, "signal");
    if (QTest::currentTestFailed()) {
        return;
    }
    for (const Case& one : cases) {
        const QString path = one.take->Path();
        QTRY_VERIFY2(IsOrdinary(path), one.name + ": it is still in pieces");
        QCOMPARE(DecodingErrors(path), QByteArray());
        // Everything ffmpeg had at that time is in the file.
        const double seconds = SecondsIn(path);
        QVERIFY2(seconds >= one.before - 0.1, one.name + ": " + QByteArray::number(seconds) +
                                                  " s of " + QByteArray::number(one.before));
        QVERIFY2(!one.take->Text().contains("Immediate exit"), one.name + ": " + one.take->Text());
    }
}

// The recorder has died unnoticed: its end of the pipe is closed.
void ToolEndTest::endOfTheKeyboardEndsTheRecording()
{
    std::vector<Case> cases;
    cases.push_back({"end of the keyboard", [](Take& take) { take.StopTyping(); }});
    RunAll(cases, "keyboard");
    if (QTest::currentTestFailed()) {
        return;
    }
    Take early(m_folder.filePath("early.mp4"), "0");
    early.StopTyping();
    for (Take* take : {cases.front().take.get(), &early}) {
        QVERIFY2(take->WaitForEnd() && take->ExitCode() == 0, take->Text());
        QTRY_VERIFY2(IsOrdinary(take->Path()), "it is still in pieces");
        QVERIFY2(SecondsIn(take->Path()) > 0, "no picture");
    }
}

void ToolEndTest::stopWorksWhateverHelperIsKilled()
{
    std::vector<Case> cases;
    cases.reserve(kHelpers);
    const Take* withoutKeeper = nullptr;
    for (int helper = 0; helper < kHelpers; ++helper) {
        cases.push_back(
            {"helper " + QByteArray::number(helper) + " is killed", [&, helper](Take& take) {
                 QTRY_VERIFY2(Keeper(take) > 0, "there is no keeper");
                 const pid_t killed = take.Helpers().at(helper);
                 withoutKeeper = killed == Keeper(take) ? &take : withoutKeeper;
                 kill(killed, SIGKILL);
                 QTRY_VERIFY(!take.Helpers().contains(killed));
                 take.Type("q\r\n");
             }});
    }
    RunAll(cases, "killed");
    if (QTest::currentTestFailed()) {
        return;
    }
    QVERIFY(withoutKeeper != nullptr);
    for (const Case& one : cases) {
        QVERIFY2(one.take->WaitForEnd(), one.name + ": it records on");
        const QString path = one.take->Path();
        if (one.take.get() != withoutKeeper) { // otherwise it stays fragmented, which plays as well
            QTRY_VERIFY2(IsOrdinary(path), one.name + ": it is still in pieces");
        }
        QCOMPARE(DecodingErrors(path), QByteArray());
        QVERIFY2(SecondsIn(path) >= one.before - 0.1, one.name);
    }
}

// Anybody can send the signal that tells the keeper that ffmpeg has ended.
void ToolEndTest::keeperSettlesNothingBeforeTheEnd()
{
    Take take(m_folder.filePath("told wrongly.mp4"), "0:1");
    QTRY_VERIFY2_WITH_TIMEOUT(take.Taken() >= kBefore, take.Text(), 20000);
    QTRY_VERIFY2(Keeper(take) > 0, "there is no keeper");
    const pid_t keeper = Keeper(take);
    QCOMPARE(kill(keeper, SIGUSR1), 0);
    const double before = take.Taken();
    QTRY_VERIFY2(take.Taken() >= before + 1, take.Text());
    QVERIFY2(take.Helpers().contains(keeper), "the keeper has ended");
    QVERIFY2(!IsOrdinary(take.Path()), "it was settled too early");
    take.Type("q\r\n");
    QVERIFY2(take.WaitForEnd() && take.ExitCode() == 0, take.Text());
    QTRY_VERIFY2(IsOrdinary(take.Path()), "it is still in pieces");
    QCOMPARE(DecodingErrors(take.Path()), QByteArray());
    QVERIFY2(SecondsIn(take.Path()) >= before + 0.9, "what came after the signal is missing");
}

QTEST_GUILESS_MAIN(ToolEndTest)
#include "tool_end_test.moc"
