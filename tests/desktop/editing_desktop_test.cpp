// Trims and joins real movies in the real window, and looks at what comes out.
#include "tests/desktop/recorder.h"
#include "tests/desktop/recording_file.h"

#include <QFile>
#include <QTest>

class EditingDesktopTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void trimKeepsWhatLiesBetweenStartAndEnd_data();
    void trimKeepsWhatLiesBetweenStartAndEnd();
    void trimOfARecordingOfOurs();
    void trimNeverOverwrites();
    void mergePlaysOneAfterTheOther_data();
    void mergePlaysOneAfterTheOther();
    void sourceThatVanishesIsToldAndNothingIsLost();
    void destinationThatCannotBeWrittenToHarmsNothing();
    void destinationThatFillsUpHarmsNothing();
    void trimOfHalfAnHour();
    void trimOfLessThanASecond();

private:
    static constexpr auto kPlain = "-c:v libx264 -preset ultrafast -g 50 -c:a aac";

    // A movie in the save directory: a moving picture of 320 by 240 and a tone, unless `arguments`
    // say otherwise; `seconds` long.
    static bool MakeMovie(const Recorder& recorder, const QString& name, int seconds,
                          const QString& arguments = kPlain, bool sound = true,
                          const QString& size = "320x240");
    // Selects the first video of the cut page, moves the slider and presses Start and End.
    static void MarkFirstVideo(Recorder& recorder, double start, double end);
    // Adds the first `count` videos of the merge page to the list.
    static void AddVideos(Recorder& recorder, int count);
    // Presses the button, chooses the folder, and gives the message that follows; it is closed.
    QString RunJob(Recorder& recorder, const QString& button, const QString& folder);

    Desktop m_desktop;
};

namespace {

QByteArray Content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList Names(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace

void EditingDesktopTest::initTestCase()
{
    QVERIFY2(m_desktop.Good(), "no X display: run it through scripts/virtual-desktop");
}

bool EditingDesktopTest::MakeMovie(const Recorder& recorder, const QString& name, int seconds,
                                   const QString& arguments, bool sound, const QString& size)
{
    QDir().mkpath(recorder.SaveDirectory());
    QStringList command{"-v", "error", "-f", "lavfi", "-i", "testsrc2=size=" + size + ":rate=25"};
    if (sound) {
        command << QStringList{"-f", "lavfi", "-i", "sine=frequency=440:sample_rate=44100"};
    }
    command << QStringList{"-t", QString::number(seconds), "-pix_fmt", "yuv420p"}
            << arguments.split(' ') << recorder.SaveDirectory() + '/' + name;
    const Outcome made = RunProgram("ffmpeg", command);
    return made.code == 0;
}

void EditingDesktopTest::MarkFirstVideo(Recorder& recorder, double start, double end)
{
    recorder.Click("home.cut");
    recorder.Click("cut.row");
    recorder.ClickBetween("cut.slider.low", "cut.slider.high", start);
    recorder.Click("cut.start");
    recorder.ClickBetween("cut.slider.low", "cut.slider.high", end);
    recorder.Click("cut.end");
}

void EditingDesktopTest::AddVideos(Recorder& recorder, int count)
{
    recorder.Click("home.merge");
    for (int row = 0; row < count; ++row) {
        recorder.ClickRow("merge.source", row);
        recorder.Click("merge.add");
    }
}

QString EditingDesktopTest::RunJob(Recorder& recorder, const QString& button, const QString& folder)
{
    recorder.Click(button);
    if (!recorder.ChooseFolder(folder)) {
        return "no folder could be chosen";
    }
    if (!WaitUntil([&] { return recorder.Message().has_value(); }, 60000)) {
        return "no message";
    }
    return recorder.CloseMessage() ? "told" : "the message cannot be closed";
}

void EditingDesktopTest::trimKeepsWhatLiesBetweenStartAndEnd_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<bool>("sound");
    QTest::newRow("plain") << "plain.mp4" << kPlain << true;
    QTest::newRow("blanks, a percent sign and an apostrophe")
        << "Ann's  100% of %1.mp4" << kPlain << true;
    QTest::newRow("letters") << QString::fromUtf8("Auf\u00e4hre \u4e2d\u6587.mp4") << kPlain
                             << true;
    QTest::newRow("a leading dash") << "-v.mp4" << kPlain << true;
    QTest::newRow("no sound") << "silent.mp4"
                              << "-c:v libx264 -preset ultrafast" << false;
    QTest::newRow("H.265") << "h265.mp4"
                           << "-c:v libx265 -preset ultrafast -c:a aac" << true;
    QTest::newRow("fragmented") << "fragments.mp4"
                                << QString(kPlain) + " -movflags frag_keyframe+empty_moov" << true;
    QTest::newRow("a bar and a line break") << "a|b\nc.mp4" << kPlain << true;
    QTest::newRow("60 pictures a second") << "60.mp4" << QString(kPlain) + " -r 60" << true;
    QTest::newRow("uneven pictures")
        << "uneven.mp4" << QString(kPlain) + " -vf select='gt(random(0),0.5)' -vsync vfr" << true;
    QTest::newRow("5.1 sound") << "six.mp4" << QString(kPlain) + " -ac 6" << true;
    QTest::newRow("turned") << "turned.mp4" << QString(kPlain) + " -metadata:s:v rotate=90" << true;
    QTest::newRow("B-frames") << "b.mp4"
                              << "-c:v libx264 -bf 3 -g 100 -c:a aac" << true;
}

void EditingDesktopTest::trimKeepsWhatLiesBetweenStartAndEnd()
{
    QFETCH(QString, name);
    QFETCH(QString, arguments);
    QFETCH(bool, sound);
    Recorder recorder(m_desktop);
    QVERIFY2(MakeMovie(recorder, name, 20, arguments, sound), "no movie to trim");
    const QString source = recorder.SaveDirectory() + '/' + name;
    const QByteArray before = Content(source);
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.25, 0.75);
    QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString("told"));

    QVERIFY2(Content(source) == before, "the source was changed");
    QCOMPARE(Names(recorder.SaveDirectory()).size(), 2);
    const RecordingFile cut = ReadRecording(recorder.SaveDirectory() + "/Cut_" + name);
    QVERIFY2(cut.fault.isEmpty(), qPrintable(cut.fault));
    QCOMPARE(cut.soundTracks.size(), sound ? 1 : 0);
    // As exact as the slider can be pressed, whole seconds and a key frame's distance apart.
    QVERIFY2(std::abs(cut.seconds - 10) <= 4.5, qPrintable(QString("%1 s").arg(cut.seconds)));
}

void EditingDesktopTest::trimOfARecordingOfOurs()
{
    if (!m_desktop.HasTray()) {
        QSKIP("no tray to stop the recording from");
    }
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.RecordFor(9000));
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitShown());
    QVERIFY(recorder.WaitForTool());
    const QString source = recorder.Recording();
    recorder.Click("record.back");
    MarkFirstVideo(recorder, 0.3, 0.8);
    QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString("told"));
    const RecordingFile cut =
        ReadRecording(recorder.SaveDirectory() + "/Cut_" + QFileInfo(source).fileName());
    QVERIFY2(cut.fault.isEmpty(), qPrintable(cut.fault));
    QCOMPARE(cut.soundTracks, QStringList{"aac"});
    QVERIFY2(cut.seconds > 2 && cut.seconds < 8, qPrintable(QString("%1 s").arg(cut.seconds)));
}

void EditingDesktopTest::trimNeverOverwrites()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "a.mp4", 10));
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.2, 0.6);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString("told"));
    }
    QCOMPARE(Names(recorder.SaveDirectory()), QStringList({"Cut_a (1).mp4", "Cut_a.mp4", "a.mp4"}));
}

void EditingDesktopTest::mergePlaysOneAfterTheOther_data()
{
    QTest::addColumn<QString>("second"); // how the second movie differs from the first
    QTest::addColumn<bool>("sound");
    QTest::addColumn<QString>("size");
    QTest::newRow("alike") << kPlain << true << "320x240";
    QTest::newRow("another size") << kPlain << true << "400x300";
    QTest::newRow("no sound") << "-c:v libx264 -preset ultrafast" << false << "320x240";
    QTest::newRow("another rate of the sound")
        << QString(kPlain) + " -ar 48000 -ac 2" << true << "320x240";
}

void EditingDesktopTest::mergePlaysOneAfterTheOther()
{
    QFETCH(QString, second);
    QFETCH(bool, sound);
    QFETCH(QString, size);
    Recorder recorder(m_desktop);
    // The page lists the newest name first.
    QVERIFY(MakeMovie(recorder, "2.mp4", 4));
    QVERIFY(MakeMovie(recorder, "1 and %1.mp4", 3, second, sound, size));
    QVERIFY(recorder.Start());
    AddVideos(recorder, 2);
    const QStringList before = Names(recorder.SaveDirectory());
    QCOMPARE(RunJob(recorder, "merge.merge", recorder.SaveDirectory()), QString("told"));
    QStringList after = Names(recorder.SaveDirectory());
    for (const QString& name : before) {
        QVERIFY2(after.removeOne(name), qPrintable(name + " is gone"));
    }
    QCOMPARE(after.size(), 1);
    QVERIFY2(after[0].startsWith("Merge_"), qPrintable(after[0]));
    const RecordingFile merged = ReadRecording(recorder.SaveDirectory() + '/' + after[0]);
    QVERIFY2(merged.fault.isEmpty(), qPrintable(merged.fault));
    QVERIFY2(std::abs(merged.seconds - 7) <= 0.4, qPrintable(QString("%1 s").arg(merged.seconds)));
    QVERIFY2(merged.soundTracks.size() <= 1, "two tracks of sound");
}

void EditingDesktopTest::sourceThatVanishesIsToldAndNothingIsLost()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "1.mp4", 2));
    QVERIFY(MakeMovie(recorder, "2.mp4", 2));
    QVERIFY(recorder.Start());
    AddVideos(recorder, 2);
    QVERIFY(QFile::remove(recorder.SaveDirectory() + "/1.mp4"));
    QCOMPARE(RunJob(recorder, "merge.merge", recorder.SaveDirectory()), QString("told"));
    QVERIFY(recorder.IsRunning());
    QVERIFY(Names(recorder.SaveDirectory()).contains("2.mp4"));
    QVERIFY2(Names(recorder.SaveDirectory()).filter(".ts").isEmpty(), "a stream is left behind");
}

// A file stands where the folder was: root can write everywhere else.
void EditingDesktopTest::destinationThatCannotBeWrittenToHarmsNothing()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "1.mp4", 6));
    const QString source = recorder.SaveDirectory() + "/1.mp4";
    const QByteArray before = Content(source);
    recorder.ReplaceTool(
        "[[ $* == *-codec* ]] && rmdir \"$HOME/vanishing\"\nexec \"$REAL\" \"$@\"\n");
    QVERIFY(QDir().mkpath(recorder.SaveDirectory() + "/../vanishing"));
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.2, 0.6);
    QCOMPARE(
        RunJob(recorder, "cut.cut", QDir::cleanPath(recorder.SaveDirectory() + "/../vanishing")),
        QString("told"));
    QVERIFY(recorder.IsRunning());
    QVERIFY2(Content(source) == before, "the source was changed");
    QCOMPARE(Names(recorder.SaveDirectory()), QStringList{"1.mp4"});
}

// The tool may write no more than 100 KiB into a file.
void EditingDesktopTest::destinationThatFillsUpHarmsNothing()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "1.mp4", 20));
    const QString source = recorder.SaveDirectory() + "/1.mp4";
    const QByteArray before = Content(source);
    QVERIFY2(before.size() > qsizetype{400} * 1024, "the movie is too small to fill anything");
    recorder.ReplaceTool("[[ $* == *copy* ]] && ulimit -f 100\nexec \"$REAL\" \"$@\"\n");
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.1, 0.9);
    QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString("told"));
    recorder.Click("cut.back");
    AddVideos(recorder, 1);
    recorder.Click("merge.add");
    QCOMPARE(RunJob(recorder, "merge.merge", recorder.SaveDirectory()), QString("told"));
    QVERIFY(recorder.IsRunning());
    QVERIFY2(Content(source) == before, "the source was changed");
    QVERIFY2(Names(recorder.SaveDirectory()).filter(".ts").isEmpty(), "a stream is left behind");
}

void EditingDesktopTest::trimOfHalfAnHour()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "long.mp4", 1800, QString(kPlain) + " -r 5", true, "128x96"));
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.5, 0.75);
    QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString("told"));
    const RecordingFile cut = ReadRecording(recorder.SaveDirectory() + "/Cut_long.mp4");
    QVERIFY2(cut.fault.isEmpty(), qPrintable(cut.fault));
    QVERIFY2(std::abs(cut.seconds - 450) <= 20, qPrintable(QString("%1 s").arg(cut.seconds)));
}

// Its length reads 00:00:00, so that there is nothing to move the slider over: a cut of no length.
void EditingDesktopTest::trimOfLessThanASecond()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "short.mp4", 1, "-frames:v 10 -shortest -c:a aac"));
    const QString source = recorder.SaveDirectory() + "/short.mp4";
    const QByteArray before = Content(source);
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.1, 0.9);
    QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString("told"));
    QVERIFY2(Content(source) == before, "the source was changed");
    QVERIFY(recorder.IsRunning());
}

QTEST_GUILESS_MAIN(EditingDesktopTest)
#include "editing_desktop_test.moc"
