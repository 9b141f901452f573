#include "jobs/tool_reason.h"

#include <QTest>

namespace {

// What ffmpeg 5.1 prints before it records, shortened.
const QByteArray kBeginning =
    "ffmpeg version 5.1.9-0+deb12u1 Copyright (c) 2000-2026 the FFmpeg developers\n"
    "  configuration: --prefix=/usr --toolchain=hardened --enable-gpl\n"
    "  libavutil      57. 28.100 / 57. 28.100\n"
    "Input #0, rawvideo, from '/dev/fd/3':\n"
    "  Duration: N/A, start: 0.000000, bitrate: 23016 kb/s\n"
    "  Stream #0:0: Video: rawvideo (I420 / 0x30323449), yuv420p, 320x200, 29.97 tbn\n";
const QByteArray kRunning =
    kBeginning +
    "Stream mapping:\n"
    "  Stream #0:0 -> #0:0 (rawvideo (native) -> h264 (libx264))\n"
    "Press [q] to stop, [?] for help\n"
    "[libx264 @ 0x55c2beae2f80] using cpu capabilities: MMX2 SSE2Fast SSSE3\n"
    "Output #0, mp4, to '/home/anna/no error/2026-11-22 08-26-01.mp4':\n"
    "  Metadata:\n"
    "    encoder         : Lavf59.27.100\n"
    "    title           : failed: No such file\n"
    "frame=   23 fps= 23 q=2.0 size=       2kB time=00:00:00.73 bitrate=  22.4kbits/s\r"
    "frame=   77 fps= 30 q=2.0 size=       4kB time=00:00:02.53 bitrate=  12.9kbits/s\r";
const QByteArray kStatistics =
    "[libx264 @ 0x55c2beae2f80] frame I:3     Avg QP:16.00  size:   564\n"
    "[libx264 @ 0x55c2beae2f80] kb/s:8.55\n";

} // namespace

// The outputs are real.
class ToolReasonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theReasonIsTheLineThatSaysWhy_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no ffmpeg")
            << QByteArray(
                   "tool: LUMENFOLD_FFMPEG names /nothing, which is not an executable file.\n")
            << "LUMENFOLD_FFMPEG names /nothing, which is not an executable file";
        QTest::newRow("no X display")
            << QByteArray("tool: No screen can be recorded: DISPLAY is not set.\n")
            << "No screen can be recorded: DISPLAY is not set";
        QTest::newRow("no such screen")
            << QByteArray("tool: there is no screen 3, the display has 1.\n")
            << "there is no screen 3, the display has 1";
        QTest::newRow("no such device")
            << QByteArray("tool: there is no audio device 7, the list has 2.\n")
            << "there is no audio device 7, the list has 2";
        QTest::newRow("read-only directory")
            << kBeginning + "/ro/2026-11-22 08-25-40.mp4: Permission denied\n"
            << "/ro/2026-11-22 08-25-40.mp4: Permission denied";
        QTest::newRow("read-only file system")
            << kBeginning + "/mnt/2026-11-22 08-25-40.mp4: Read-only file system\n"
            << "/mnt/2026-11-22 08-25-40.mp4: Read-only file system";
        QTest::newRow("unwritable HOME")
            << kBeginning + "/nowhere/ScreenSave/a.mp4: No such file or directory\n"
            << "/nowhere/ScreenSave/a.mp4: No such file or directory";
        QTest::newRow("HOME is a file") << kBeginning + "/file/ScreenSave/a.mp4: Not a directory\n"
                                        << "/file/ScreenSave/a.mp4: Not a directory";
        QTest::newRow("disk full")
            << kRunning +
                   "av_interleaved_write_frame(): No space left on device\n"
                   "    Last message repeated 4 times\n"
                   "frame=   80 fps= 30 q=-1.0 Lsize=       4kB time=00:00:02.63 bitrate=11\n"
                   "video:3kB audio:0kB subtitle:0kB other streams:0kB\n"
                   "Error closing file /full/a.mp4: No space left on device\n" +
                   kStatistics + "Conversion failed!\n"
            << "Error closing file /full/a.mp4: No space left on device";
        QTest::newRow("disk full, ffmpeg 7")
            << kRunning + "[out#0/mp4 @ 0x5581f1c0] [mp4 @ 0x5581f2c0] Error writing trailer: No "
                          "space left on device\n"
                          "frame=   80 fps= 30 q=-1.0 Lsize=       4KiB time=00:00:02.63\n"
                          "Conversion failed!\n"
            << "Error writing trailer: No space left on device";
        QTest::newRow("asked to end")
            << kRunning + kStatistics + "Exiting normally, received signal 15.\n"
            << "Exiting normally, received signal 15";
        QTest::newRow("the screen is gone") << kRunning + kStatistics << "";
        QTest::newRow("function's name")
            << QByteArray("av_interleaved_write_frame(): No space left on device\r\n")
            << "No space left on device";
        QTest::newRow("nothing") << QByteArray() << "";
    }

    void theReasonIsTheLineThatSaysWhy()
    {
        QFETCH(QByteArray, output);
        QTEST(ReasonIn(QString::fromLatin1(output), false), "reason");
    }

    void aWarningBeforeTheLastProgressIsNoReasonToBeKilled()
    {
        const QString warned = QString::fromLatin1(kRunning).replace(
            "frame=   77", "[aac @ 0x5581f1c0] Error while filtering\nframe=   77");
        QCOMPARE(ReasonIn(warned, true), QString());
        QCOMPARE(ReasonIn(warned + "tool: ffmpeg was killed.\n", true),
                 QString("ffmpeg was killed"));
        QCOMPARE(ReasonIn(warned, false), QString("Error while filtering"));
    }

    void bytesOfUtf8AreReadAsThat()
    {
        const QByteArray line = "/home/\u00e4\u4f60/a.mp4: Permission denied\n";
        QCOMPARE(ReasonIn(QString::fromLatin1(line), false), QString::fromUtf8(line).chopped(1));
    }

    void aHostileLineBecomesPlainAndShort()
    {
        const QByteArray rightToLeft = QString(QChar(0x202e)).toUtf8();
        const QByteArray line = "tool: <b>\x1b[31m\t\x07 error " + rightToLeft +
                                QByteArray(9000, 'x') + "\xff\xfe end.\n";
        const QString reason = ReasonIn(QString::fromLatin1(line), false);
        QCOMPARE(reason.size(), 200);
        QVERIFY2(reason.startsWith("<b> [31m error xxx"), qPrintable(reason));
        QVERIFY2(reason.endsWith(" end"), qPrintable(reason));
        for (const QChar character : reason) {
            QVERIFY2(character.isPrint(),
                     qPrintable("character " + QString::number(character.unicode(), 16)));
        }
    }

    void aLineOfTwoHundredCharactersIsNotCut()
    {
        const QString fits(200, 'x');
        QCOMPARE(PlainLine(fits), fits);
        QCOMPARE(PlainLine(fits + 'x').size(), 200);
        QCOMPARE(PlainLine("a\nb"), QString("a b"));
    }
};

QTEST_GUILESS_MAIN(ToolReasonTest)
#include "tool_reason_test.moc"
