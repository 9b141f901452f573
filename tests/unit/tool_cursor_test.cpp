// The pointer, drawn into a picture of the screen and removed again.
#include "tests/support/canvas.h"
#include "tests/support/tool_movies.h"

#include <QTest>

#include <vector>

using tool::DrawnCursor;
using tool::Pixels;

namespace {

constexpr uint32_t opaqueRed = 0xffff0000;
constexpr uint32_t halfWhite = 0x80808080; // premultiplied

} // namespace

class ToolCursorTest : public QObject
{
    Q_OBJECT

private slots:
    static void cursorCoversWhatLiesUnderIt();
    static void nothingIsDrawnBelowThePicture();
    static void clearPartsOfACursorLetThePictureThrough();
    static void cursorAtAnEdgeIsCutOff_data();
    static void cursorAtAnEdgeIsCutOff();
    static void cursorLeavesNoTrace();
};

void ToolCursorTest::cursorCoversWhatLiesUnderIt()
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

void ToolCursorTest::nothingIsDrawnBelowThePicture()
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

void ToolCursorTest::clearPartsOfACursorLetThePictureThrough()
{
    Canvas canvas(4, 1);
    canvas.Fill(100, 0, 200);
    const std::vector<uint32_t> image{halfWhite, 0x00000000, 0xffffffff};
    const DrawnCursor cursor({0, 0, 3, 1, image.data()}, canvas.View());
    QCOMPARE(canvas.Colour(0, 0), QByteArray("\xb2\x80\xe4", 3)); // 128 + 127/255 of it
    QCOMPARE(canvas.Colour(1, 0), QByteArray("\x64\x00\xc8", 3));
    QCOMPARE(canvas.Colour(2, 0), QByteArray("\xff\xff\xff", 3));
}

void ToolCursorTest::cursorAtAnEdgeIsCutOff_data()
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
void ToolCursorTest::cursorAtAnEdgeIsCutOff()
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

void ToolCursorTest::cursorLeavesNoTrace()
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

QTEST_GUILESS_MAIN(ToolCursorTest)
#include "tool_cursor_test.moc"
