// Compares the colours with those ffmpeg produces.
#include "tests/support/tool_movies.h"
#include "tool/screen/screen_picture.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

using tool::ConvertToYuv;
using tool::DrawnCursor;
using tool::NarrowColours;
using tool::Pixels;
using tool::YuvBytes;

namespace {

// Smooth colours with a few hard edges, like a desktop. Rows are padded.
struct Canvas
{
    Canvas(int w, int h)
        : width(w),
          height(h),
          stride(w * 4 + 20),
          bytes(static_cast<size_t>(stride) * static_cast<size_t>(h), 0x5a)
    {
    }

    uint8_t* At(int x, int y)
    {
        const ptrdiff_t place = static_cast<ptrdiff_t>(y) * stride + static_cast<ptrdiff_t>(x) * 4;
        return bytes.data() + place;
    }
    Pixels View() { return {bytes.data(), stride, width, height}; }
    void Fill(uint8_t blue, uint8_t green, uint8_t red)
    {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                std::copy_n(std::initializer_list<uint8_t>{blue, green, red, 77}.begin(), 4,
                            At(x, y));
            }
        }
    }
    QByteArray Colour(int x, int y) { return {reinterpret_cast<const char*>(At(x, y)), 3}; }

    int width;
    int height;
    int stride;
    std::vector<uint8_t> bytes;
};

void Paint(Canvas& canvas)
{
    for (int y = 0; y < canvas.height; ++y) {
        for (int x = 0; x < canvas.width; ++x) {
            uint8_t* pixel = canvas.At(x, y);
            const bool box = x / 40 % 3 == 1 && y / 30 % 2 == 1;
            pixel[0] = static_cast<uint8_t>(box ? 250 : 128 + 120 * std::sin(x * 0.02));
            pixel[1] = static_cast<uint8_t>(box ? 20 : 128 + 120 * std::cos(y * 0.03));
            pixel[2] = static_cast<uint8_t>(box ? 90 : 255 * x / canvas.width);
        }
    }
}

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

constexpr uint32_t opaqueRed = 0xffff0000;
constexpr uint32_t halfWhite = 0x80808080; // premultiplied

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
    static void cursorCoversWhatLiesUnderIt();
    static void nothingIsDrawnBelowThePicture();
    static void clearPartsOfACursorLetThePictureThrough();
    static void cursorAtAnEdgeIsCutOff_data();
    static void cursorAtAnEdgeIsCutOff();
    static void cursorLeavesNoTrace();
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

void ToolScreenPictureTest::cursorCoversWhatLiesUnderIt()
{
    Canvas canvas(10, 10);
    canvas.Fill(10, 20, 30);
    const std::vector<uint32_t> image(4, opaqueRed);
    const DrawnCursor cursor({3, 4, 2, 2, image.data()}, canvas.View());
    const QByteArray ground("\x0a\x14\x1e", 3);
    const QByteArray red("\x00\x00\xff", 3);
    int drawn = 0;
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 10; ++x) {
            const bool inside = (x == 3 || x == 4) && (y == 4 || y == 5);
            QCOMPARE(canvas.Colour(x, y), inside ? red : ground);
            drawn += inside ? 1 : 0;
        }
    }
    QCOMPARE(drawn, 4);
}

void ToolScreenPictureTest::nothingIsDrawnBelowThePicture()
{
    Canvas canvas(10, 10);
    canvas.Fill(10, 20, 30);
    Pixels upperHalf = canvas.View();
    upperHalf.height = 5;
    const std::vector<uint32_t> image(9, opaqueRed);
    const DrawnCursor cursor({3, 4, 3, 3, image.data()}, upperHalf);
    QCOMPARE(canvas.Colour(4, 4), QByteArray("\x00\x00\xff", 3));
    QCOMPARE(canvas.Colour(4, 5), QByteArray("\x0a\x14\x1e", 3));
}

void ToolScreenPictureTest::clearPartsOfACursorLetThePictureThrough()
{
    Canvas canvas(4, 1);
    canvas.Fill(100, 0, 200);
    const std::vector<uint32_t> image{halfWhite, 0x00000000, 0xffffffff};
    const DrawnCursor cursor({0, 0, 3, 1, image.data()}, canvas.View());
    QCOMPARE(canvas.Colour(0, 0), QByteArray("\xb2\x80\xe4", 3)); // 128 + 127/255 of it
    QCOMPARE(canvas.Colour(1, 0), QByteArray("\x64\x00\xc8", 3));
    QCOMPARE(canvas.Colour(2, 0), QByteArray("\xff\xff\xff", 3));
}

void ToolScreenPictureTest::cursorAtAnEdgeIsCutOff_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("drawn");
    QTest::newRow("upper left") << -2 << -1 << 1;
    QTest::newRow("lower right") << 8 << 7 << 2;
    QTest::newRow("left of it") << -3 << 4 << 0;
    QTest::newRow("below it") << 4 << 8 << 0;
    QTest::newRow("far away") << 5000 << -5000 << 0;
}

// Memory beyond the picture's rows must not be changed.
void ToolScreenPictureTest::cursorAtAnEdgeIsCutOff()
{
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(int, drawn);
    Canvas canvas(10, 8);
    const std::vector<uint8_t> before = canvas.bytes;
    const std::vector<uint32_t> image(6, 0xff010203);
    const DrawnCursor cursor({x, y, 3, 2, image.data()}, canvas.View());
    int changed = 0;
    for (size_t i = 0; i < before.size(); ++i) {
        const bool behind = i % static_cast<size_t>(canvas.stride) >= 40;
        const bool meansNothing = i % static_cast<size_t>(canvas.stride) % 4 == 3;
        const bool differs = before[i] != canvas.bytes[i] && !meansNothing;
        QVERIFY2(!(behind && before[i] != canvas.bytes[i]), "drawn beside the picture");
        changed += differs ? 1 : 0;
    }
    QCOMPARE(changed, drawn * 3);
}

void ToolScreenPictureTest::cursorLeavesNoTrace()
{
    Canvas canvas(60, 50);
    Paint(canvas);
    const std::vector<uint8_t> before = canvas.bytes;
    const std::vector<uint32_t> image(size_t{20} * 30, halfWhite);
    for (const auto& [x, y] : {std::pair{-5, -7}, {55, 45}, {10, 10}, {-500, 3}}) {
        {
            const DrawnCursor cursor({x, y, 20, 30, image.data()}, canvas.View());
            QCOMPARE(canvas.bytes != before, x > -20);
        }
        QVERIFY2(canvas.bytes == before, "something of the cursor stays");
    }
}

QTEST_GUILESS_MAIN(ToolScreenPictureTest)
#include "tool_screen_picture_test.moc"
