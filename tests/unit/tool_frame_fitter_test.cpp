// Pictures of compositors as frames: upright, in the frame's size, whatever the pixels are.
#include "tool/screen/frame_fitter.h"
#include "tool/screen/screen_picture.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

using tool::FrameFitter;
using tool::PixelOrder;
using tool::SourcePicture;

namespace {

// 0xRRGGBB, and its brightness in a frame.
struct Colour
{
    uint32_t rgb;
    int luma;
};
constexpr Colour kRed{0xff0000, 82};
constexpr Colour kGreen{0x00ff00, 144};
constexpr Colour kBlue{0x0000ff, 41};
constexpr Colour kWhite{0xffffff, 235};
constexpr int kBlack = 16;

uint32_t Pixel(uint32_t rgb, PixelOrder order)
{
    const uint32_t red = rgb >> 16 & 0xff;
    const uint32_t green = rgb >> 8 & 0xff;
    const uint32_t blue = rgb & 0xff;
    const auto ten = [](uint32_t eight) { return eight << 2 | eight >> 6; };
    switch (order) {
    case PixelOrder::Bgr:
    case PixelOrder::PackedBgr:
        return red << 16 | green << 8 | blue;
    case PixelOrder::Rgb:
    case PixelOrder::PackedRgb:
        return blue << 16 | green << 8 | red;
    case PixelOrder::Bgr10:
        return ten(red) << 20 | ten(green) << 10 | ten(blue);
    case PixelOrder::Rgb10:
        return ten(blue) << 20 | ten(green) << 10 | ten(red);
    }
    return 0;
}

// Four coloured quarters, with rows that are padded.
struct Quarters
{
    Quarters(int w, int h, const std::array<Colour, 4>& colours, PixelOrder pixelOrder)
        : width(w),
          height(h),
          stride(w * tool::PixelBytes(pixelOrder) + 20),
          order(pixelOrder),
          bytes(static_cast<size_t>(stride * h))
    {
        const auto pixelBytes = static_cast<size_t>(tool::PixelBytes(order));
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                const size_t quarter = (y >= h / 2 ? 2U : 0U) + (x >= w / 2 ? 1U : 0U);
                const uint32_t pixel = Pixel(colours.at(quarter).rgb, order);
                std::memcpy(
                    &bytes[static_cast<size_t>(y * stride) + static_cast<size_t>(x) * pixelBytes],
                    &pixel, pixelBytes);
            }
        }
    }
    SourcePicture View(int transform = 0) const
    {
        return {bytes.data(), stride, width, height, order, transform};
    }

    int width;
    int height;
    int stride;
    PixelOrder order;
    std::vector<uint8_t> bytes;
};

// A frame of this size, followed by bytes that must stay.
struct Frame
{
    Frame(int w, int h) : width(w), height(h), bytes(tool::YuvBytes(w, h) + kBehind, kUntouched) {}
    void Take(const SourcePicture& picture)
    {
        FrameFitter().Write(picture, bytes.data(), width, height);
    }
    int At(int x, int y) const
    {
        return bytes[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
    bool KeepsItsBounds() const
    {
        return std::all_of(bytes.end() - kBehind, bytes.end(),
                           [](uint8_t byte) { return byte == kUntouched; });
    }
    // The brightness in the middle of its quarters.
    std::array<int, 4> Lumas() const
    {
        return {At(width / 4, height / 4), At(width * 3 / 4, height / 4),
                At(width / 4, height * 3 / 4), At(width * 3 / 4, height * 3 / 4)};
    }

    static constexpr int kBehind = 64;
    static constexpr uint8_t kUntouched = 0x5a;
    int width;
    int height;
    std::vector<uint8_t> bytes;
};

// Colours are rounded a little differently by each way of converting them.
void ExpectLumas(const Frame& frame, const std::array<Colour, 4>& colours)
{
    const auto lumas = frame.Lumas();
    for (size_t i = 0; i < colours.size(); ++i) {
        QVERIFY2(std::abs(lumas.at(i) - colours.at(i).luma) <= 2,
                 qPrintable(QString("quarter %1 has the brightness %2 instead of %3")
                                .arg(i)
                                .arg(lumas.at(i))
                                .arg(colours.at(i).luma)));
    }
    QVERIFY2(frame.KeepsItsBounds(), "bytes behind the frame were written");
}

} // namespace

class FrameFitterTest : public QObject
{
    Q_OBJECT

private slots:
    static void everyPixelFormatHasItsColours_data();
    static void everyPixelFormatHasItsColours();
    static void pictureOfATurnedMonitorIsUpright_data();
    static void pictureOfATurnedMonitorIsUpright();
    static void rowsFromBelowAreUpright();
    static void oddColumnsAndRowsAreCutOff_data();
    static void oddColumnsAndRowsAreCutOff();
    static void pictureOfAnotherSizeIsScaledBetweenBlackBorders_data();
    static void pictureOfAnotherSizeIsScaledBetweenBlackBorders();
    static void extremeSizesStayInTheFrame_data();
    static void extremeSizesStayInTheFrame();
};

void FrameFitterTest::everyPixelFormatHasItsColours_data()
{
    QTest::addColumn<int>("order");
    QTest::newRow("blue first") << static_cast<int>(PixelOrder::Bgr);
    QTest::newRow("red first") << static_cast<int>(PixelOrder::Rgb);
    QTest::newRow("blue first, 10 bits") << static_cast<int>(PixelOrder::Bgr10);
    QTest::newRow("red first, 10 bits") << static_cast<int>(PixelOrder::Rgb10);
    QTest::newRow("blue first, packed") << static_cast<int>(PixelOrder::PackedBgr);
    QTest::newRow("red first, packed") << static_cast<int>(PixelOrder::PackedRgb);
}

void FrameFitterTest::everyPixelFormatHasItsColours()
{
    QFETCH(int, order);
    const std::array colours{kRed, kGreen, kBlue, kWhite};
    const Quarters picture(64, 48, colours, static_cast<PixelOrder>(order));
    Frame frame(64, 48);
    frame.Take(picture.View());
    ExpectLumas(frame, colours);
}

void FrameFitterTest::pictureOfATurnedMonitorIsUpright_data()
{
    QTest::addColumn<int>("transform");
    QTest::addColumn<QList<int>>("shown"); // the delivered quarter that is seen in each place
    QTest::newRow("normal") << 0 << QList{0, 1, 2, 3};
    QTest::newRow("90") << 1 << QList{2, 0, 3, 1};
    QTest::newRow("180") << 2 << QList{3, 2, 1, 0};
    QTest::newRow("270") << 3 << QList{1, 3, 0, 2};
    QTest::newRow("flipped") << 4 << QList{1, 0, 3, 2};
    QTest::newRow("flipped 90") << 5 << QList{0, 2, 1, 3};
    QTest::newRow("flipped 180") << 6 << QList{2, 3, 0, 1};
    QTest::newRow("flipped 270") << 7 << QList{3, 1, 2, 0};
}

void FrameFitterTest::pictureOfATurnedMonitorIsUpright()
{
    QFETCH(int, transform);
    QFETCH(QList<int>, shown);
    const std::array colours{kRed, kGreen, kBlue, kWhite};
    std::array<Colour, 4> seen{};
    for (size_t i = 0; i < seen.size(); ++i) {
        seen.at(i) = colours.at(static_cast<size_t>(shown.at(static_cast<qsizetype>(i))));
    }
    for (const PixelOrder order : {PixelOrder::Bgr, PixelOrder::Rgb10}) {
        const Quarters picture(64, 48, colours, order);
        const tool::Rectangle size = tool::UprightSize(64, 48, transform);
        QCOMPARE(size.width, transform % 2 == 0 ? 64 : 48);
        Frame frame(size.width, size.height);
        frame.Take(picture.View(transform));
        ExpectLumas(frame, seen);
    }
}

void FrameFitterTest::rowsFromBelowAreUpright()
{
    const Quarters picture(64, 48, {kRed, kGreen, kBlue, kWhite}, PixelOrder::Bgr);
    SourcePicture view = picture.View();
    view.first += static_cast<ptrdiff_t>(view.stride) * (view.height - 1);
    view.stride = -view.stride;
    Frame frame(64, 48);
    frame.Take(view);
    ExpectLumas(frame, {kBlue, kWhite, kRed, kGreen});
}

void FrameFitterTest::oddColumnsAndRowsAreCutOff_data()
{
    QTest::addColumn<int>("transform");
    for (int transform = 0; transform < 8; ++transform) {
        QTest::addRow("transform %d", transform) << transform;
    }
}

void FrameFitterTest::oddColumnsAndRowsAreCutOff()
{
    QFETCH(int, transform);
    const tool::Rectangle size = tool::UprightSize(65, 49, transform);
    Quarters picture(65, 49, {kWhite, kWhite, kWhite, kWhite}, PixelOrder::Bgr);
    Frame frame(size.width - 1, size.height - 1);
    frame.Take(picture.View(transform));
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            QCOMPARE(frame.At(x, y), kWhite.luma);
        }
    }
    QVERIFY(frame.KeepsItsBounds());
}

void FrameFitterTest::pictureOfAnotherSizeIsScaledBetweenBlackBorders_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QRect>("place"); // in a frame of 64x48
    QTest::newRow("half the size") << QSize(32, 24) << QRect(0, 0, 64, 48);
    QTest::newRow("twice the size") << QSize(128, 96) << QRect(0, 0, 64, 48);
    QTest::newRow("wider") << QSize(128, 48) << QRect(0, 12, 64, 24);
    QTest::newRow("higher") << QSize(48, 96) << QRect(20, 0, 24, 48);
    QTest::newRow("turned sideways") << QSize(48, 64) << QRect(14, 0, 36, 48);
}

void FrameFitterTest::pictureOfAnotherSizeIsScaledBetweenBlackBorders()
{
    QFETCH(QSize, picture);
    QFETCH(QRect, place);
    const Quarters white(picture.width(), picture.height(), {kWhite, kWhite, kWhite, kWhite},
                         PixelOrder::Rgb);
    Frame frame(64, 48);
    frame.Take(white.View());
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            const int expected = place.contains(x, y) ? kWhite.luma : kBlack;
            QVERIFY2(std::abs(frame.At(x, y) - expected) <= 1,
                     qPrintable(QString("%1 at %2, %3").arg(frame.At(x, y)).arg(x).arg(y)));
        }
    }
    QVERIFY(frame.KeepsItsBounds());
}

void FrameFitterTest::extremeSizesStayInTheFrame_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::newRow("one pixel") << QSize(1, 1);
    QTest::newRow("one row") << QSize(tool::largestSide, 1);
    QTest::newRow("one column") << QSize(1, tool::largestSide);
    QTest::newRow("three pixels") << QSize(3, 1);
}

void FrameFitterTest::extremeSizesStayInTheFrame()
{
    QFETCH(QSize, picture);
    const Quarters white(picture.width(), picture.height(), {kWhite, kWhite, kWhite, kWhite},
                         PixelOrder::Bgr10);
    for (int transform = 0; transform < 8; ++transform) {
        for (const QSize& size : {QSize(2, 2), QSize(64, 48), QSize(2, 480)}) {
            Frame frame(size.width(), size.height());
            frame.Take(white.View(transform));
            QVERIFY(frame.KeepsItsBounds());
        }
    }
}

QTEST_GUILESS_MAIN(FrameFitterTest)
#include "tool_frame_fitter_test.moc"
