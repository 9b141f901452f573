#include "jobs/free_space.h"
#include "jobs/recording_status.h"

#include <QStorageInfo>
#include <QTemporaryDir>
#include <QTest>

class RecordingStatusTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theIconBlinksInACycleOf32Ticks()
    {
        int count = 0;
        for (int cycle = 0; cycle < 3; ++cycle) {
            for (int tick = 1; tick <= 32; ++tick) {
                const QString expected = tick <= 16   ? ":/image/rec1.png"
                                         : tick <= 31 ? ":/image/rec2.png"
                                                      : "";
                QVERIFY2(BlinkImage(count) == expected, qPrintable(QString("tick %1").arg(tick)));
            }
            QCOMPARE(count, 0);
        }
    }

    void theStatusShowsWholeSecondsAndTheSize()
    {
        QCOMPARE(RecordingStatus(0, 0), QString("Recording... \n\n00:00:00\n\n0 Bytes"));
        QCOMPARE(RecordingStatus(61999, 1536), QString("Recording... \n\n00:01:01\n\n1.50 KB"));
        QCOMPARE(RecordingStatus(3600000, 1LL << 30),
                 QString("Recording... \n\n01:00:00\n\n1.00 GB"));
    }

    void theElapsedTimeIsRightAcrossTheWrapOfTheTick()
    {
        QCOMPARE(ElapsedMs(1000, 1200), 200U);
        QCOMPARE(ElapsedMs(4294967000U, 704), 1000U);
    }

    void theStopForSpaceHasItsOwnText()
    {
        QCOMPARE(RecordingFailure(-101), QString("Not enough space, recording stopped."));
        QCOMPARE(RecordingFailure(1), QString("Record failed. Create mp4 file failed."));
        QCOMPARE(RecordingFailure(-1), QString("Record failed. Create mp4 file failed."));
    }

    void theFreeSpaceIsThatOfTheNearestExistingParent()
    {
        const QTemporaryDir directory;
        const auto volume = quint64(QStorageInfo(directory.path()).bytesAvailable());
        const quint64 below = FreeBytes(directory.filePath("not/there/yet"));
        const quint64 difference = below > volume ? below - volume : volume - below;
        QVERIFY2(difference < (1U << 30),
                 "not the volume of the existing parent"); // others write too
        QVERIFY(below > 0);
    }

    void aPathThatIsNotAbsoluteHasNoFreeSpace()
    {
        QCOMPARE(FreeBytes("relative/path"), 0U);
        QCOMPARE(FreeBytes(QString()), 0U);
    }
};

QTEST_GUILESS_MAIN(RecordingStatusTest)
#include "recording_status_test.moc"
