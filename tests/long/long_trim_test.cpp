// Trims half an hour in the real window.
#include "tests/support/desktop_test.h"
#include "tests/support/editing.h"
#include "tests/support/recording_file.h"

#include <QFile>
#include <QTest>

class LongTrimTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void trimOfHalfAnHour();
};

void LongTrimTest::trimOfHalfAnHour()
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

QTEST_GUILESS_MAIN(LongTrimTest)
#include "long_trim_test.moc"
