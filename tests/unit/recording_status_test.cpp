#include "jobs/free_space.h"
#include "jobs/recording_status.h"

#include <QDir>
#include <QStorageInfo>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

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

    void aStartThatFailedNamesTheToolAndTheLastOfTheProcesssReasons()
    {
        QCOMPARE(StartFailure(false, "execvp: No such file or directory", false),
                 QString("tool: No such file or directory"));
        QCOMPARE(StartFailure(false, "one: two: three", true), QString("tool: three"));
        QCOMPARE(StartFailure(false, "Permission denied", false),
                 QString("tool: Permission denied"));
    }

    void aStartIsOneUnlessARecordingWasStillBeingFinished()
    {
        QCOMPARE(StartFailure(true, "Unknown error", false), QString());
        QCOMPARE(StartFailure(true, "Unknown error", true),
                 QString("the recording before it was still being finished"));
    }

    void aFailureNamesTheReasonAndTheFileIfThereIsOne()
    {
        QCOMPARE(StartFailureText("why"), QString("The recording could not be started: why"));
        QCOMPARE(EndText("why", {}), QString("The recording has ended by itself: why"));
        QCOMPARE(EndText("why", "/a\n/b.mp4"), QString("The recording has ended by itself: why\n"
                                                       "What was recorded until then:\n/a /b.mp4"));
        QCOMPARE(StandstillText(10, "/a.mp4"),
                 QString("The recording has come to a halt: nothing has been written for 10 s\n"
                         "What was recorded until then:\n/a.mp4"));
        QCOMPARE(NoFileText("/a.mp4", {}),
                 QString("The recording's file is missing or empty: /a.mp4"));
        QCOMPARE(NoFileText("/a.mp4", "why"),
                 QString("The recording's file is missing or empty: /a.mp4\nwhy"));
    }

    void aToolThatSaidNothingWasKilledOrEndedWithACode()
    {
        QCOMPARE(UnsaidReason(true, 9), QString("tool was killed or has crashed"));
        QCOMPARE(UnsaidReason(false, 0), QString("tool did not say why"));
        QCOMPARE(UnsaidReason(false, 3), QString("tool ended with code 3 and did not say why"));
    }

    void tenMebibytesAreEnoughAndOneByteLessIsNot()
    {
        QVERIFY(!IsTooLittleSpace(10485760));
        QVERIFY(IsTooLittleSpace(10485759));
        QVERIFY(IsTooLittleSpace(0));
        QVERIFY(!IsTooLittleSpace(1ULL << 33)); // does not fit into 32 bits
    }

    void thePathGoesThroughLatin1()
    {
        const QString volume = "/dev/shm"; // not the volume of temporary files on Linux
        const QTemporaryDir directory;
        const QString path = directory.filePath(QString::fromUtf8("\u00e4"));
        QVERIFY(QDir().mkdir(path));
        const QByteArray latin1 = QFile::encodeName(directory.path()) + "/\xe4";
        if (!QFile::exists(volume) || symlink("/dev/shm", latin1.constData()) != 0) {
            QSKIP("no second volume, or no such name here");
        }
        // Other processes write too, so the figures are compared only if nothing changed in
        // between.
        quint64 before = 0;
        quint64 shown = 0;
        quint64 after = 1;
        for (int attempt = 0; attempt < 1000 && before != after; ++attempt) {
            before = FreeBytes(volume);
            shown = FreeBytes(path);
            after = FreeBytes(volume);
        }
        unlink(latin1.constData()); // QFile cannot represent the name, so it cannot remove the file
        QCOMPARE(before, after);
        if (before == FreeBytes(directory.path())) {
            QSKIP("no second volume with another figure");
        }
        QCOMPARE(shown, before);
    }

    void theFreeSpaceIsThatOfTheNearestExistingParent()
    {
        const QTemporaryDir directory;
        const auto volume = quint64(QStorageInfo(directory.path()).bytesAvailable());
        const quint64 below = FreeBytes(directory.filePath("not/there/yet"));
        const quint64 difference = below > volume ? below - volume : volume - below;
        QVERIFY2(difference < (1U << 30),
                 "not the volume of the existing parent"); // other processes write too
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
