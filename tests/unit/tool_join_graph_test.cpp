// Parsing ffmpeg's description of the parts of a join, and the command made from it.
#include "tool/edit/encoding_join.h"

#include <QByteArray>
#include <QTest>

using tool::ParseDescriptions;
using tool::PartDescription;

class ToolJoinGraphTest : public QObject
{
    Q_OBJECT

private slots:
    void rateIsMadeExact_data();
    void rateIsMadeExact();
    void turnedPictureIsMeasuredUpright_data();
    void turnedPictureIsMeasuredUpright();
    void firstTrackOfAKindCounts();
    void firstPartsPictureAndSoundSetTheFormat();
};

void ToolJoinGraphTest::rateIsMadeExact_data()
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

void ToolJoinGraphTest::rateIsMadeExact()
{
    QFETCH(QByteArray, told);
    QFETCH(QByteArray, rate);
    const auto parts = ParseDescriptions("Input #0, mpegts, from 'a':\n  Stream #0:0: Video: h264, "
                                         "yuv420p, 320x240, " +
                                         told.toStdString() + " fps, 90k tbn\n");
    QCOMPARE(parts.size(), size_t{1});
    QCOMPARE(QByteArray::fromStdString(parts[0].rate), rate);
}

void ToolJoinGraphTest::turnedPictureIsMeasuredUpright_data()
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

void ToolJoinGraphTest::turnedPictureIsMeasuredUpright()
{
    QFETCH(QByteArray, degrees);
    QFETCH(bool, upright);
    const auto parts = ParseDescriptions(
        "Input #0, mov, from 'a':\n  Stream #0:0: Video: h264, yuv420p, 320x240, 25 fps\n"
        "      displaymatrix: rotation of " +
        degrees.toStdString() + " degrees\n");
    QCOMPARE(parts.size(), size_t{1});
    QCOMPARE(parts[0].width, upright ? 240 : 320);
    QCOMPARE(parts[0].height, upright ? 320 : 240);
}

void ToolJoinGraphTest::firstTrackOfAKindCounts()
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

// "First" is the first part that has the track.
void ToolJoinGraphTest::firstPartsPictureAndSoundSetTheFormat()
{
    const PartDescription picture{320, 240, "25", 0, "", 2};
    const PartDescription both{640, 480, "30", 44100, "mono", 3};
    const PartDescription sound{0, 0, "", 48000, "stereo", 4};
    const auto command = [](const std::vector<PartDescription>& parts) {
        std::vector<std::string> names(parts.size(), "x.ts");
        QByteArray text;
        for (const std::string& argument : tool::EncodingJoin(names, parts)) {
            text += QByteArray::fromStdString(argument) + ' ';
        }
        return text;
    };
    const QByteArray one = command({picture, both, sound});
    QVERIFY2(one.contains("-r 25 ") && one.contains("pad=320:240:") && !one.contains("640"), one);
    QVERIFY2(one.contains("sample_rates=44100:channel_layouts=mono") && !one.contains("48000"),
             one);
    QVERIFY2(one.contains("anullsrc=r=44100:cl=mono"), one);
    // Sound that starts late is preceded by silence; otherwise it would play too early.
    QVERIFY2(one.contains("aresample=44100:async=1:first_pts=0,"), one);
    QVERIFY2(one.contains("color=black:s=320x240:r=25:d=4.0"), one);
    QVERIFY2(one.contains("concat=n=3:v=1:a=1[v][a]"), one);
    const QByteArray silent = command({picture, picture});
    QVERIFY2(silent.contains("concat=n=2:v=1:a=0[v]") && !silent.contains("-c:a"), silent);
    const QByteArray dark = command({sound, sound});
    QVERIFY2(dark.contains("concat=n=2:v=0:a=1[a]") && !dark.contains("-c:v"), dark);
}

QTEST_APPLESS_MAIN(ToolJoinGraphTest)
#include "tool_join_graph_test.moc"
