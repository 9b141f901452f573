// Trims recordings and movies in the real window, also when something goes wrong.
#include "tests/support/desktop_test.h"
#include "tests/support/editing.h"
#include "tests/support/recording_file.h"

#include <QFile>
#include <QTest>

class TrimDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void trimOfARecordingOfOurs();
    void trimNeverOverwrites();
    void destinationThatCannotBeWrittenToHarmsNothing();
    void destinationThatFillsUpHarmsNothing();
    void trimOfLessThanASecond();
};

void TrimDesktopTest::trimOfARecordingOfOurs()
{
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

void TrimDesktopTest::trimNeverOverwrites()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "a.mp4", 10));
    QVERIFY(recorder.Start());
    MarkFirstVideo(recorder, 0.2, 0.6);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(RunJob(recorder, "cut.cut", recorder.SaveDirectory()), QString());
    }
    QCOMPARE(FileNames(recorder.SaveDirectory()),
             QStringList({"Cut_a (1).mp4", "Cut_a.mp4", "a.mp4"}));
}

// A file is where the folder was. Not even root can write into that.
void TrimDesktopTest::destinationThatCannotBeWrittenToHarmsNothing()
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
    QCOMPARE(FileNames(recorder.SaveDirectory()), QStringList{"1.mp4"});
}

// The tool may write at most 100 KiB to a file.
void TrimDesktopTest::destinationThatFillsUpHarmsNothing()
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
    QCOMPARE(FileNames(recorder.SaveDirectory()), QStringList{"1.mp4"});
    QCOMPARE(FileNames(home.filePath("cut")), QStringList());
    QCOMPARE(FileNames(home.filePath("merged")), QStringList());
    const QStringList ends =
        QString(Content(home.filePath("ends"))).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(ends.size(), 4); // the cut, both conversions and the join
    QVERIFY2(ends.first() != "0" && ends.last() != "0",
             qPrintable("nothing was full: " + ends.join(' ')));
}

// Its length reads 00:00:00, so the slider cannot be moved, and the cut has no length.
void TrimDesktopTest::trimOfLessThanASecond()
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

QTEST_GUILESS_MAIN(TrimDesktopTest)
#include "trim_desktop_test.moc"
