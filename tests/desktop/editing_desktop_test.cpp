// Trims and joins real movies in the real window and inspects the results.
#include "tests/support/ordinary_movie.h"
#include "tests/support/recorder.h"
#include "tests/support/recording_file.h"
#include "tests/support/shown_pictures.h"

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
    void mergeOfTwoRecordingsOfOurs();
    void sourceThatVanishesIsToldAndNothingIsLost();
    void destinationThatCannotBeWrittenToHarmsNothing();
    void destinationThatFillsUpHarmsNothing();
    void trimOfHalfAnHour();
    void trimOfLessThanASecond();

private:
    static constexpr auto kPlain = "-c:v libx264 -preset ultrafast -g 50 -c:a aac";

    // Makes a movie of `seconds` in the save directory: a moving picture of 320×240 and a tone,
    // unless `arguments` says otherwise.
    static bool MakeMovie(const Recorder& recorder, const QString& name, int seconds,
                          const QString& arguments = kPlain, bool sound = true,
                          const QString& size = "320x240");
    // Selects the first video of the cut page, moves the slider and clicks Start and End.
    static void MarkFirstVideo(Recorder& recorder, double start, double end);
    // Records for some seconds and stops. Returns whether there is a settled recording.
    static bool Record(Recorder& recorder, int milliseconds);
    // Adds the first `count` videos of the merge page to the list.
    static void AddVideos(Recorder& recorder, int count);
    // Clicks the button, chooses the folder and closes the message that follows. Returns what went
    // wrong. The message's text cannot be read from outside, so every test looks at the files.
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

QMap<QString, QByteArray> Contents(const QString& folder)
{
    QMap<QString, QByteArray> contents;
    for (const QString& name : Names(folder)) {
        contents[name] = Content(folder + '/' + name);
    }
    return contents;
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
    return recorder.CloseMessage() ? QString() : "the message cannot be closed";
}

bool EditingDesktopTest::Record(Recorder& recorder, int milliseconds)
{
    return recorder.StartRecording() && recorder.RecordFor(milliseconds) &&
           recorder.ChooseInTray(1) && recorder.WaitShown() && recorder.WaitForTool() &&
           WaitUntil([&] { return IsOrdinary(recorder.Recording()); });
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
                              << "-c:v libx264 -preset ultrafast -g 50" << false;
    QTest::newRow("H.265") << "h265.mp4"
                           << "-c:v libx265 -preset ultrafast -g 50 -c:a aac" << true;
    QTest::newRow("fragmented") << "fragments.mp4"
                                << QString(kPlain) + " -movflags frag_keyframe+empty_moov" << true;
    QTest::newRow("a bar and a line break") << "a|b\nc.mp4" << kPlain << true;
    QTest::newRow("60 pictures a second") << "60.mp4" << QString(kPlain) + " -r 60" << true;
    QTest::newRow("uneven pictures")
        << "uneven.mp4" << QString(kPlain) + " -vf select='gt(random(0),0.5)' -vsync vfr" << true;
    QTest::newRow("5.1 sound") << "six.mp4" << QString(kPlain) + " -ac 6" << true;
    QTest::newRow("turned") << "turned.mp4" << QString(kPlain) + " -metadata:s:v rotate=90" << true;
    QTest::newRow("B-frames") << "b.mp4"
                              << "-c:v libx264 -bf 3 -g 50 -c:a aac" << true;
}

// There is a sync sample every two seconds, which limits the precision of a cut that copies.

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
    QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString());

    QVERIFY2(Content(source) == before, "the source was changed");
    QCOMPARE(Names(recorder.SaveDirectory()).size(), 2);
    const RecordingFile cut = ReadRecording(recorder.SaveDirectory() + "/Cut_" + name);
    QVERIFY2(cut.fault.isEmpty(), qPrintable(cut.fault));
    QCOMPARE(cut.soundTracks.size(), sound ? 1 : 0);
    QVERIFY2(std::abs(cut.seconds - 10) <= 2, qPrintable(QString("%1 s").arg(cut.seconds)));
    const QList<Picture> all = Pictures(source);
    const QList<Picture> kept = Pictures(recorder.SaveDirectory() + "/Cut_" + name);
    QVERIFY2(!kept.isEmpty(), "no picture is shown");
    const double first = SecondOf(all, kept.first());
    const double last = SecondOf(all, kept.last());
    QVERIFY2(std::abs(first - 5) <= 2 && std::abs(last - 15) <= 2,
             qPrintable(QString("it shows %1 s to %2 s of the source").arg(first).arg(last)));
    QVERIFY2(kept.first().seconds <= 0.1,
             qPrintable(QString("the first picture comes after %1 s").arg(kept.first().seconds)));
}

void EditingDesktopTest::trimOfARecordingOfOurs()
{
    if (!m_desktop.HasTray()) {
        QSKIP("no tray to stop the recording from");
    }
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(Record(recorder, 9000));
    const QString source = recorder.Recording();
    recorder.Click("record.back");
    MarkFirstVideo(recorder, 0.3, 0.8);
    QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString());
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
        QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString());
    }
    QCOMPARE(Names(recorder.SaveDirectory()), QStringList({"Cut_a (1).mp4", "Cut_a.mp4", "a.mp4"}));
}

void EditingDesktopTest::mergePlaysOneAfterTheOther_data()
{
    QTest::addColumn<QString>("second"); // how the second movie differs
    QTest::addColumn<bool>("sound");
    QTest::addColumn<QString>("size");
    QTest::addColumn<QString>("name");
    const auto row = [](const char* title, const QString& second, bool sound = true,
                        const char* size = "320x240", const char* name = "1 and %1.mp4") {
        QTest::newRow(title) << second << sound << size << name;
    };
    row("alike", kPlain);
    row("another size", kPlain, true, "400x300");
    row("no sound", "-c:v libx264 -preset ultrafast", false);
    row("another rate of the sound", QString(kPlain) + " -ar 48000 -ac 2");
    row("5.1 sound", QString(kPlain) + " -ac 6");
    row("H.265", "-c:v libx265 -preset ultrafast -c:a aac");
    row("B-frames", "-c:v libx264 -bf 3 -c:a aac");
    row("fragmented", QString(kPlain) + " -movflags frag_keyframe+empty_moov");
    row("turned", QString(kPlain) + " -metadata:s:v rotate=90");
    row("blanks and an apostrophe", kPlain, true, "320x240", "1  Ann's  one.mp4");
}

void EditingDesktopTest::mergePlaysOneAfterTheOther()
{
    QFETCH(QString, second);
    QFETCH(bool, sound);
    QFETCH(QString, size);
    QFETCH(QString, name);
    Recorder recorder(m_desktop);
    // The page lists the newest video first.
    QVERIFY(MakeMovie(recorder, "2.mp4", 4));
    QVERIFY(MakeMovie(recorder, name, 3, second, sound, size));
    QVERIFY(recorder.Start());
    AddVideos(recorder, 2);
    const auto before = Contents(recorder.SaveDirectory());
    QCOMPARE(RunJob(recorder, "merge.merge", recorder.SaveDirectory()), QString());
    QStringList after = Names(recorder.SaveDirectory());
    for (auto source = before.begin(); source != before.end(); ++source) {
        QVERIFY2(after.removeOne(source.key()), qPrintable(source.key() + " is gone"));
        QVERIFY2(Content(recorder.SaveDirectory() + '/' + source.key()) == source.value(),
                 qPrintable(source.key() + " was changed"));
    }
    QCOMPARE(after.size(), 1);
    QVERIFY2(after[0].startsWith("Merge_"), qPrintable(after[0]));
    const RecordingFile merged = ReadRecording(recorder.SaveDirectory() + '/' + after[0]);
    QVERIFY2(merged.fault.isEmpty(), qPrintable(merged.fault));
    QVERIFY2(std::abs(merged.seconds - 7) <= 0.4, qPrintable(QString("%1 s").arg(merged.seconds)));
    QCOMPARE(merged.soundTracks.size(), 1);
    QCOMPARE(merged.pictureTracks.size(), 1);
}

void EditingDesktopTest::mergeOfTwoRecordingsOfOurs()
{
    if (!m_desktop.HasTray()) {
        QSKIP("no tray to stop the recordings from");
    }
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(Record(recorder, 4000));
    QVERIFY(Record(recorder, 3000));
    const auto before = Contents(recorder.SaveDirectory());
    QCOMPARE(before.size(), 2);
    double seconds = 0;
    for (const QString& recording : recorder.Recordings()) {
        seconds += ReadRecording(recording).seconds;
    }
    const QString target = QDir::cleanPath(recorder.SaveDirectory() + "/../merged");
    QVERIFY(QDir().mkpath(target));
    recorder.Click("record.back");
    AddVideos(recorder, 2);
    QCOMPARE(RunJob(recorder, "merge.merge", target), QString());
    QVERIFY2(Contents(recorder.SaveDirectory()) == before, "a recording was changed");
    QCOMPARE(Names(target).size(), 1);
    const RecordingFile merged = ReadRecording(target + '/' + Names(target).first());
    QVERIFY2(merged.fault.isEmpty(), qPrintable(merged.fault));
    QCOMPARE(merged.soundTracks, QStringList{"aac"});
    QVERIFY2(std::abs(merged.seconds - seconds) <= 0.4,
             qPrintable(QString("%1 s of %2 s").arg(merged.seconds).arg(seconds)));
}

void EditingDesktopTest::sourceThatVanishesIsToldAndNothingIsLost()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "1.mp4", 2));
    QVERIFY(MakeMovie(recorder, "2.mp4", 2));
    QVERIFY(recorder.Start());
    AddVideos(recorder, 2);
    QVERIFY(QFile::remove(recorder.SaveDirectory() + "/1.mp4"));
    QCOMPARE(RunJob(recorder, "merge.merge", recorder.SaveDirectory()), QString());
    QVERIFY(recorder.IsRunning());
    QCOMPARE(Names(recorder.SaveDirectory()), QStringList{"2.mp4"});
}

// A file is where the folder was. Not even root can write into that.
void EditingDesktopTest::destinationThatCannotBeWrittenToHarmsNothing()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "1.mp4", 6));
    const QString source = recorder.SaveDirectory() + "/1.mp4";
    const QByteArray before = Content(source);
    recorder.ReplaceTool(
        "[[ $* == *-codec* ]] && rmdir \"$HOME/vanishing\" && printf mine >\"$HOME/vanishing\"\n"
        "exec \"$REAL\" \"$@\"\n");
    const QString target = QDir::cleanPath(recorder.SaveDirectory() + "/../vanishing");
    QVERIFY(QDir().mkpath(target));
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.2, 0.6);
    QCOMPARE(RunJob(recorder, "cut.cut", target), QString());
    QCOMPARE(Content(target), QByteArray("mine"));
    QVERIFY(recorder.IsRunning());
    QVERIFY2(Content(source) == before, "the source was changed");
    QCOMPARE(Names(recorder.SaveDirectory()), QStringList{"1.mp4"});
}

// The tool may write at most 100 KiB to a file.
void EditingDesktopTest::destinationThatFillsUpHarmsNothing()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "1.mp4", 20));
    const QString source = recorder.SaveDirectory() + "/1.mp4";
    const QByteArray before = Content(source);
    QVERIFY2(before.size() > qsizetype{400} * 1024, "the movie is too small to fill anything");
    recorder.ReplaceTool("[[ $* == *copy* ]] || exec \"$REAL\" \"$@\"\n"
                         "ulimit -f 100\n\"$REAL\" \"$@\"\necho $? >>\"$HOME/ends\"\n");
    const QDir home(QDir::cleanPath(recorder.SaveDirectory() + "/.."));
    QVERIFY(home.mkdir("cut") && home.mkdir("merged"));
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.1, 0.9);
    QCOMPARE(RunJob(recorder, "cut.cut", home.filePath("cut")), QString());
    recorder.Click("cut.back");
    AddVideos(recorder, 1);
    recorder.Click("merge.add");
    QCOMPARE(RunJob(recorder, "merge.merge", home.filePath("merged")), QString());
    QVERIFY(recorder.IsRunning());
    QVERIFY2(Content(source) == before, "the source was changed");
    QCOMPARE(Names(recorder.SaveDirectory()), QStringList{"1.mp4"});
    QVERIFY2(Names(home.filePath("merged")).filter(".ts").isEmpty(), "a stream is left behind");
    const QStringList ends =
        QString(Content(home.filePath("ends"))).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(ends.size(), 4); // the cut, both conversions and the join
    QVERIFY2(!ends.mid(0, 3).contains("0"), qPrintable("nothing was full: " + ends.join(' ')));
}

void EditingDesktopTest::trimOfHalfAnHour()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "long.mp4", 1800, QString(kPlain) + " -r 5", true, "128x96"));
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.5, 0.75);
    QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString());
    const RecordingFile cut = ReadRecording(recorder.SaveDirectory() + "/Cut_long.mp4");
    QVERIFY2(cut.fault.isEmpty(), qPrintable(cut.fault));
    QVERIFY2(std::abs(cut.seconds - 450) <= 20, qPrintable(QString("%1 s").arg(cut.seconds)));
}

// Its length reads 00:00:00, so the slider cannot be moved, and the cut has no length.
void EditingDesktopTest::trimOfLessThanASecond()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "short.mp4", 1, "-frames:v 10 -shortest -c:a aac"));
    const QString source = recorder.SaveDirectory() + "/short.mp4";
    const QByteArray before = Content(source);
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.1, 0.9);
    QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString());
    QVERIFY2(Content(source) == before, "the source was changed");
    QVERIFY(recorder.IsRunning());
}

QTEST_GUILESS_MAIN(EditingDesktopTest)
#include "editing_desktop_test.moc"
