// Joins real movies in the real window and inspects the results.
#include "tests/support/desktop_test.h"
#include "tests/support/editing.h"
#include "tests/support/recording_file.h"

#include <QFile>
#include <QTest>

class MergeDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void mergePlaysOneAfterTheOther_data();
    void mergePlaysOneAfterTheOther();
    void mergeOfTwoRecordingsOfOurs();
    void sourceThatVanishesIsToldAndNothingIsLost();
};

void MergeDesktopTest::mergePlaysOneAfterTheOther_data()
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

void MergeDesktopTest::mergePlaysOneAfterTheOther()
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
    QStringList after = FileNames(recorder.SaveDirectory());
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

void MergeDesktopTest::mergeOfTwoRecordingsOfOurs()
{
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
    QCOMPARE(FileNames(target).size(), 1);
    const RecordingFile merged = ReadRecording(target + '/' + FileNames(target).first());
    QVERIFY2(merged.fault.isEmpty(), qPrintable(merged.fault));
    QCOMPARE(merged.soundTracks, QStringList{"aac"});
    QVERIFY2(std::abs(merged.seconds - seconds) <= 0.4,
             qPrintable(QString("%1 s of %2 s").arg(merged.seconds).arg(seconds)));
}

void MergeDesktopTest::sourceThatVanishesIsToldAndNothingIsLost()
{
    Recorder recorder(m_desktop);
    QVERIFY(MakeMovie(recorder, "1.mp4", 2));
    QVERIFY(MakeMovie(recorder, "2.mp4", 2));
    QVERIFY(recorder.Start());
    AddVideos(recorder, 2);
    QVERIFY(QFile::remove(recorder.SaveDirectory() + "/1.mp4"));
    QCOMPARE(RunJob(recorder, "merge.merge", recorder.SaveDirectory()), QString());
    QVERIFY(recorder.IsRunning());
    QCOMPARE(FileNames(recorder.SaveDirectory()), QStringList{"2.mp4"});
}

QTEST_GUILESS_MAIN(MergeDesktopTest)
#include "merge_desktop_test.moc"
