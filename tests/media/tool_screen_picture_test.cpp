// Compares the colours with those ffmpeg produces.
#include "tests/support/canvas.h"
#include "tests/support/tool_movies.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

using tool::ConvertToYuv;
using tool::NarrowColours;
using tool::YuvBytes;

namespace {

// The mean of each plane, and the mean difference of the two pictures in it.
struct Comparison
{
    double difference = 0;
    double distance = 0;
};

Comparison Compare(const QByteArray& ours, const QByteArray& theirs, size_t from, size_t count)
{
    Comparison result;
    for (size_t i = from; i < from + count; ++i) {
        const int apart = static_cast<uint8_t>(ours[static_cast<qsizetype>(i)]) -
                          static_cast<uint8_t>(theirs[static_cast<qsizetype>(i)]);
        result.difference += apart;
        result.distance += std::abs(apart);
    }
    result.difference /= static_cast<double>(count);
    result.distance /= static_cast<double>(count);
    return result;
}

QByteArray Converted(Canvas& canvas, int width, int height)
{
    QByteArray picture(static_cast<qsizetype>(YuvBytes(width, height)), 'x');
    ConvertToYuv(canvas.View(), reinterpret_cast<uint8_t*>(picture.data()), width, height);
    return picture;
}

} // namespace

class ToolScreenPictureTest : public QObject
{
    Q_OBJECT

private slots:
    static void coloursAreThoseOfFfmpeg_data();
    static void coloursAreThoseOfFfmpeg();
    static void blackAndWhiteAreTheEndsOfTheRange();
    static void screenThatHasBecomeSmallerLeavesBlack();
    static void screenThatIsLargerIsCutOff();
    static void tenBitsOfAColourBecomeEight();
};

void ToolScreenPictureTest::coloursAreThoseOfFfmpeg_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("even") << 320 << 240;
    QTest::newRow("odd width") << 321 << 240;
    QTest::newRow("odd height") << 320 << 241;
    QTest::newRow("odd both") << 317 << 95;
}

void ToolScreenPictureTest::coloursAreThoseOfFfmpeg()
{
    QFETCH(int, width);
    QFETCH(int, height);
    Canvas canvas(width, height);
    Paint(canvas);
    const QTemporaryDir folder;
    QFile source(folder.filePath("screen.raw"));
    QVERIFY(source.open(QIODevice::WriteOnly));
    for (int y = 0; y < height; ++y) {
        source.write(reinterpret_cast<const char*>(canvas.At(0, y)), qint64{width} * 4);
    }
    source.close();
    const QString size = QString("%1x%2").arg(width).arg(height);
    const Outcome theirs = RunProgram(
        "ffmpeg", {"-v", "error", "-f", "rawvideo", "-pixel_format", "bgr0", "-video_size", size,
                   "-i", source.fileName(), "-pix_fmt", "yuv420p", "-f", "rawvideo", "-"});
    const QByteArray ours = Converted(canvas, width, height);
    QVERIFY2(theirs.output.size() == ours.size(), theirs.error);

    const auto luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    const size_t colour = (YuvBytes(width, height) - luma) / 2;
    for (const auto& [name, from, count] : {std::tuple{"luma", size_t{0}, luma},
                                            {"blue", luma, colour},
                                            {"red", luma + colour, colour}}) {
        const Comparison plane = Compare(ours, theirs.output, from, count);
        const QString text = QString("%1: %2 brighter, %3 apart")
                                 .arg(name)
                                 .arg(plane.difference)
                                 .arg(plane.distance);
        QVERIFY2(std::abs(plane.difference) < 1 && plane.distance < 2, qPrintable(text));
    }
}

void ToolScreenPictureTest::blackAndWhiteAreTheEndsOfTheRange()
{
    Canvas canvas(4, 4);
    canvas.Fill(0, 0, 0);
    QCOMPARE(Converted(canvas, 4, 4), QByteArray(16, 16) + QByteArray(8, '\x80'));
    canvas.Fill(255, 255, 255);
    QCOMPARE(Converted(canvas, 4, 4), QByteArray(16, '\xeb') + QByteArray(8, '\x80'));
}

void ToolScreenPictureTest::screenThatHasBecomeSmallerLeavesBlack()
{
    Canvas canvas(2, 2);
    canvas.Fill(255, 255, 255);
    const QByteArray picture = Converted(canvas, 4, 4);
    const QByteArray white(2, '\xeb');
    const QByteArray black(2, '\x10');
    QCOMPARE(picture.left(16), white + black + white + black + QByteArray(8, '\x10'));
    QCOMPARE(picture.mid(16), QByteArray(8, '\x80'));
    Canvas none(0, 0);
    QCOMPARE(Converted(none, 4, 4), QByteArray(16, '\x10') + QByteArray(8, '\x80'));
}

void ToolScreenPictureTest::screenThatIsLargerIsCutOff()
{
    Canvas canvas(8, 8);
    canvas.Fill(255, 255, 255);
    QCOMPARE(Converted(canvas, 4, 2), QByteArray(8, '\xeb') + QByteArray(4, '\x80'));
}

void ToolScreenPictureTest::tenBitsOfAColourBecomeEight()
{
    struct Row
    {
        uint32_t ten;
        QByteArray eight; // blue, green, red
    };
    const QList<Row> rows = {
        {0, QByteArray(3, '\0')},
        {0x3fffffff, QByteArray(3, '\xff')},
        {0xffffffff, QByteArray(3, '\xff')}, // the upper two bits mean nothing
        {0x3ff00000, QByteArray("\x00\x00\xff", 3)},
        {0x000ffc00, QByteArray("\x00\xff\x00", 3)},
        {0x000003ff, QByteArray("\xff\x00\x00", 3)},
        {1U << 20 | 2U << 10 | 3U, QByteArray(3, '\0')}, // less than an eighth bit
        {4U << 20 | 8U << 10 | 12U, QByteArray("\x03\x02\x01", 3)},
        {0x123U << 20 | 0x2abU << 10 | 0x3deU, QByteArray("\xf7\xaa\x48", 3)},
    };
    const auto count = static_cast<int>(rows.size());
    Canvas canvas(count, 2);
    canvas.Fill(1, 2, 3);
    for (int x = 0; x < count; ++x) {
        std::memcpy(canvas.At(x, 1), &rows[x].ten, 4);
    }
    const std::vector<uint8_t> padding(canvas.At(count, 1), canvas.At(count, 1) + 20);
    NarrowColours({canvas.At(0, 1), canvas.stride, count, 1});
    for (int x = 0; x < count; ++x) {
        QCOMPARE(canvas.Colour(x, 1).toHex(), rows[x].eight.toHex());
        QCOMPARE(canvas.Colour(x, 0), QByteArray("\x01\x02\x03", 3));
    }
    QVERIFY2(std::equal(padding.begin(), padding.end(), canvas.At(count, 1)),
             "something beside the picture was changed");
}

QTEST_GUILESS_MAIN(ToolScreenPictureTest)
#include "tool_screen_picture_test.moc"
