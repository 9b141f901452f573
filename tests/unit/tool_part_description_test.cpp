// What is taken from ffmpeg's description of the parts of a join.
#include "tool/edit/part_description.h"

#include <QByteArray>
#include <QTest>

using tool::ParseDescriptions;

class ToolPartDescriptionTest : public QObject
{
    Q_OBJECT

private slots:
    void descriptionsAreReadFromFfmpegsText_data();
    void descriptionsAreReadFromFfmpegsText();
    void whatNoVideoCanBeIsNotTakenFromFfmpegsText_data();
    void whatNoVideoCanBeIsNotTakenFromFfmpegsText();
    void rateIsMadeExact_data();
    void rateIsMadeExact();
    void turnedPictureIsMeasuredUpright_data();
    void turnedPictureIsMeasuredUpright();
    void firstTrackOfAKindCounts();
};

void ToolPartDescriptionTest::descriptionsAreReadFromFfmpegsText_data()
{
    QTest::addColumn<QString>("indent");
    QTest::newRow("ffmpeg 5") << "  ";
    QTest::newRow("ffmpeg 4") << "    ";
}

void ToolPartDescriptionTest::descriptionsAreReadFromFfmpegsText()
{
    QFETCH(QString, indent);
    QString text =
        "Input #0, mpegts, from '1.ts':\n  Duration: 00:01:02.50, start: 1.400000, bitrate: 1 "
        "kb/s\n"
        "  Stream #0:0[0x100]: Video: h264 (High) ([27][0][0][0] / 0x001B), yuv420p(tv, bt709, "
        "progressive), 1280x720 [SAR 1:1 DAR 16:9], 29.97 fps, 29.97 tbr, 90k tbn\n"
        "  Stream #0:1[0x101](und): Audio: aac (LC) ([15][0][0][0] / 0x000F), 44100 Hz, 5.1(side), "
        "fltp, 72 kb/s\n"
        "Input #1, mov, from '2.ts':\n"
        "  Stream #1:0[0x1](und): Video: mpeg4 (mp4v / 0x7634706D), yuv420p, 720x576 [SAR 16:15 "
        "DAR "
        "4:3], 12.5 fps, 25 tbr, 12800 tbn (default)\n    Side data:\n"
        "      displaymatrix: rotation of -90.00 degrees\n"
        "Input #2, mov, from '3.ts':\n"
        "  Stream #2:0: Video: h264, yuv420p, 101x99, 90k tbr, 90k tbn\n";
    text.replace("  Stream #", indent + "Stream #");
    const auto parts = ParseDescriptions(text.toStdString());
    QCOMPARE(parts.size(), size_t{3});
    QCOMPARE(parts[0].width, 1280);
    QCOMPARE(parts[0].height, 720);
    QCOMPARE(parts[0].rate, std::string("30000/1001"));
    QCOMPARE(parts[0].sampleRate, 44100);
    QCOMPARE(parts[0].channels, std::string("5.1(side)"));
    QCOMPARE(parts[0].duration, 62.5);
    QCOMPARE(parts[1].width, 576);
    QCOMPARE(parts[1].height, 768);
    QCOMPARE(parts[1].rate, std::string("12.5"));
    QVERIFY(!parts[1].HasSound());
    QCOMPARE(parts[2].width % 2, 0);
    QCOMPARE(parts[2].height % 2, 0);
    QCOMPARE(parts[2].rate, std::string("30"));
    QVERIFY(ParseDescriptions("a.ts: No such file or directory\n").empty());
}

void ToolPartDescriptionTest::whatNoVideoCanBeIsNotTakenFromFfmpegsText_data()
{
    QTest::addColumn<QString>("stream");
    QTest::addColumn<QString>("read"); // size, frame rate, sample rate, channels
    const char* video = "Video: h264, yuv420p, ";
    const char* audio = "Audio: aac, ";
    const auto row = [](const char* name, const QString& stream, const char* read) {
        QTest::newRow(name) << stream << read;
    };
    row("larger than any", QString(video) + "999999999x2, 25 fps", "0x0 25 0 ");
    row("below nothing", QString(video) + "-4x-4, 25 fps", "0x0 25 0 ");
    row("size after one that is none", QString(video) + "0x0, 64x48, 25 fps", "64x48 25 0 ");
    row("pixels wider than any picture", QString(video) + "64x48 [SAR 99999999:1], 25 fps",
        "64x48 25 0 ");
    row("pixels without a width", QString(video) + "64x48 [SAR 1:9999], 25 fps", "64x48 25 0 ");
    row("a rate that goes on", QString(video) + "64x48, 25[x];y fps", "64x48 30 0 ");
    row("a rate that ends with its point", QString(video) + "64x48, 29. fps", "64x48 30 0 ");
    row("a rate of two points", QString(video) + "64x48, 2.5.1 fps", "64x48 30 0 ");
    row("no finite rate", QString(video) + "64x48, inf fps", "64x48 30 0 ");
    row("more samples than an int", QString(audio) + "99999999999 Hz, mono, fltp", "0x0  0 ");
    row("no finite sample rate", QString(audio) + "nan Hz, mono, fltp", "0x0  0 ");
    row("channels that end a filter", QString(audio) + "8000 Hz, mono;x[y], fltp",
        "0x0  8000 stereo");
    row("no channels", QString(audio) + "8000 Hz, , fltp", "0x0  8000 stereo");
}

void ToolPartDescriptionTest::whatNoVideoCanBeIsNotTakenFromFfmpegsText()
{
    QFETCH(QString, stream);
    QFETCH(QString, read);
    const QString text = "Input #0, mov, from '1.ts':\n  Duration: -1:-1:-1.00, start: 0\n"
                         "  Stream #0:0: " +
                         stream + "\n";
    const auto parts = ParseDescriptions(text.toStdString());
    QCOMPARE(parts.size(), size_t{1});
    const tool::PartDescription& part = parts.front();
    QCOMPARE(QString("%1x%2 %3 %4 %5")
                 .arg(part.width)
                 .arg(part.height)
                 .arg(QString::fromStdString(part.rate))
                 .arg(part.sampleRate)
                 .arg(QString::fromStdString(part.channels)),
             read);
    QVERIFY2(part.duration >= 0, "a part of less than no time");
}

void ToolPartDescriptionTest::rateIsMadeExact_data()
{
    QTest::addColumn<QByteArray>("told");
    QTest::addColumn<QByteArray>("rate");
    const auto row = [](const char* told, const char* rate) {
        QTest::newRow(told) << QByteArray(told) << QByteArray(rate);
    };
    row("23.98", "24000/1001");
    row("29.97", "30000/1001");
    row("47.95", "48000/1001");
    row("59.94", "60000/1001");
    row("119.88", "120000/1001");
    row("29.96", "29.96");
    row("25", "25");
    row("30", "30");
    row("1", "1");
    row("240", "240");
    row("0.5", "30");
    row("241", "30");
    row("1k", "30");
    row("1e2", "30");
}

void ToolPartDescriptionTest::rateIsMadeExact()
{
    QFETCH(QByteArray, told);
    QFETCH(QByteArray, rate);
    const auto parts = ParseDescriptions("Input #0, mpegts, from 'a':\n  Stream #0:0: Video: h264, "
                                         "yuv420p, 320x240, " +
                                         told.toStdString() + " fps, 90k tbn\n");
    QCOMPARE(parts.size(), size_t{1});
    QCOMPARE(QByteArray::fromStdString(parts[0].rate), rate);
}

void ToolPartDescriptionTest::turnedPictureIsMeasuredUpright_data()
{
    QTest::addColumn<QByteArray>("degrees");
    QTest::addColumn<bool>("upright");
    for (const char* degrees : {"90.00", "-90.00", "46.00", "-134.00"}) {
        QTest::newRow(degrees) << QByteArray(degrees) << true;
    }
    for (const char* degrees : {"0.00", "180.00", "-180.00", "44.00", "136.00"}) {
        QTest::newRow(degrees) << QByteArray(degrees) << false;
    }
}

void ToolPartDescriptionTest::turnedPictureIsMeasuredUpright()
{
    QFETCH(QByteArray, degrees);
    QFETCH(bool, upright);
    for (const char* label : {"displaymatrix", "Display Matrix"}) { // the second since ffmpeg 9
        const auto parts = ParseDescriptions(
            "Input #0, mov, from 'a':\n  Stream #0:0: Video: h264, yuv420p, 320x240, 25 fps\n"
            "      " +
            std::string(label) + ": rotation of " + degrees.toStdString() + " degrees\n");
        QCOMPARE(parts.size(), size_t{1});
        QCOMPARE(parts[0].width, upright ? 240 : 320);
        QCOMPARE(parts[0].height, upright ? 320 : 240);
    }
}

void ToolPartDescriptionTest::firstTrackOfAKindCounts()
{
    const auto parts = ParseDescriptions("Input #0, mov, from 'a':\n"
                                         "  Duration: 01:02:03.50, start: 0.0, bitrate: 1 kb/s\n"
                                         "  Stream #0:0: Video: h264, yuv420p, 320x240, 25 fps\n"
                                         "  Stream #0:1: Video: png, rgb24, 64x64, 90 fps\n"
                                         "  Stream #0:2: Audio: aac (LC), 48000 Hz, 5.1(side), x\n"
                                         "  Stream #0:3: Audio: aac (LC), 8000 Hz, mono, x\n"
                                         "Input #1, mov, from 'b':\n");
    QCOMPARE(parts.size(), size_t{2});
    QCOMPARE(parts[0].width, 320);
    QCOMPARE(parts[0].rate, std::string("25"));
    QCOMPARE(parts[0].sampleRate, 48000);
    QCOMPARE(parts[0].channels, std::string("5.1(side)"));
    QCOMPARE(parts[0].duration, 3723.5);
    QVERIFY(!parts[1].HasPicture() && !parts[1].HasSound());
}

QTEST_APPLESS_MAIN(ToolPartDescriptionTest)
#include "tool_part_description_test.moc"
