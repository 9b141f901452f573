// Trims movies of all kinds in the real window and looks for the right frames in the results.
#include "tests/support/desktop_test.h"
#include "tests/support/editing.h"
#include "tests/support/recording_file.h"
#include "tests/support/shown_pictures.h"

#include <QFile>
#include <QTest>

class TrimKindsDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void trimKeepsWhatLiesBetweenStartAndEnd_data();
    void trimKeepsWhatLiesBetweenStartAndEnd();
};

void TrimKindsDesktopTest::trimKeepsWhatLiesBetweenStartAndEnd_data()
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
void TrimKindsDesktopTest::trimKeepsWhatLiesBetweenStartAndEnd()
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
    QCOMPARE(FileNames(recorder.SaveDirectory()).size(), 2);
    const RecordingFile cut = ReadRecording(recorder.SaveDirectory() + "/Cut_" + name);
    QVERIFY2(cut.fault.isEmpty(), qPrintable(cut.fault));
    QCOMPARE(cut.soundTracks.size(), sound ? 1 : 0);
    QVERIFY2(std::abs(cut.seconds - 10) <= 2, qPrintable(QString("%1 s").arg(cut.seconds)));
    const QList<ShownPicture> all = Pictures(source);
    const QList<ShownPicture> kept = Pictures(recorder.SaveDirectory() + "/Cut_" + name);
    QVERIFY2(!kept.isEmpty(), "no picture is shown");
    const double first = SecondOf(all, kept.first());
    const double last = SecondOf(all, kept.last());
    QVERIFY2(std::abs(first - 5) <= 2 && std::abs(last - 15) <= 2,
             qPrintable(QString("it shows %1 s to %2 s of the source").arg(first).arg(last)));
    QVERIFY2(kept.first().seconds <= 0.1,
             qPrintable(QString("the first picture comes after %1 s").arg(kept.first().seconds)));
}

QTEST_GUILESS_MAIN(TrimKindsDesktopTest)
#include "trim_kinds_desktop_test.moc"
