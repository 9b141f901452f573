// Pictures of every kind that a compositor may deliver.
#include "tests/support/fake_pictures.h"

#include <QTest>

#include <cstdlib>

using namespace std::chrono_literals;
using Answer = FakeCompositor::Answer;
using Outcome = tool::Screen::Outcome;

namespace {

constexpr uint32_t kArgb8888 = 0;
constexpr uint32_t kXrgb8888 = 1;

} // namespace

class WaylandPictureTest : public QObject
{
    Q_OBJECT

private slots:
    static void everyFormatHasItsColoursAndThePointer_data();
    static void everyFormatHasItsColoursAndThePointer();
    static void pictureFromBelowIsUpright();
    static void olderCompositorsDeliverPictures_data();
    static void olderCompositorsDeliverPictures();
    static void layoutThatCannotBeIsRefused_data();
    static void layoutThatCannotBeIsRefused();
    static void layoutThatBecomesImpossibleLeavesTheLastPicture();
    static void pictureThatChangesItsSizeFillsTheSameFrame();
};

void WaylandPictureTest::everyFormatHasItsColoursAndThePointer_data()
{
    QTest::addColumn<uint>("format");
    QTest::addColumn<uint>("green"); // a pixel
    QTest::newRow("ARGB8888") << kArgb8888 << 0xff00ff00U;
    QTest::newRow("XRGB8888") << kXrgb8888 << 0x0000ff00U;
    QTest::newRow("ABGR8888") << 0x34324241U << 0xff00ff00U;
    QTest::newRow("XBGR8888") << 0x34324258U << 0x0000ff00U;
    QTest::newRow("ARGB2101010") << 0x30335241U << 0x000ffc00U;
    QTest::newRow("XRGB2101010") << 0x30335258U << 0x000ffc00U;
    QTest::newRow("ABGR2101010") << 0x30334241U << 0x000ffc00U;
    QTest::newRow("XBGR2101010") << 0x30334258U << 0x000ffc00U;
    QTest::newRow("RGB888") << 0x34324752U << 0x0000ff00U;
    QTest::newRow("BGR888") << 0x34324742U << 0x0000ff00U;
}

void WaylandPictureTest::everyFormatHasItsColoursAndThePointer()
{
    QFETCH(uint, format);
    QFETCH(uint, green);
    FakeCompositor behaviour;
    behaviour.format = format;
    behaviour.pixel = green;
    const RunningCompositor compositor(behaviour);
    FakePictures pictures(compositor);
    QVERIFY(pictures.IsOpen());
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(compositor.FramesWithPointer(), compositor.FramesAskedFor());
    constexpr int greenLuma = 145;
    QVERIFY2(std::abs(pictures.At(30, 10) - greenLuma) <= 2,
             qPrintable(QString::number(pictures.At(30, 10))));
    QCOMPARE(pictures.At(30, 40), kBlack);
}

void WaylandPictureTest::pictureFromBelowIsUpright()
{
    FakeCompositor behaviour;
    behaviour.pixel = kWhitePixel;
    behaviour.upsideDown = true;
    const RunningCompositor compositor(behaviour);
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.At(30, 10), kBlack);
    QCOMPARE(pictures.At(30, 40), kWhite);
}

void WaylandPictureTest::olderCompositorsDeliverPictures_data()
{
    QTest::addColumn<uint>("version");
    QTest::newRow("1") << 1U;
    QTest::newRow("2") << 2U;
    QTest::newRow("3") << 3U;
}

void WaylandPictureTest::olderCompositorsDeliverPictures()
{
    QFETCH(uint, version);
    FakeCompositor behaviour = With({Answer::Copied});
    behaviour.screencopyVersion = version;
    RunningCompositor compositor(behaviour);
    FakePictures pictures(compositor);
    for (int i = 0; i < 5; ++i) {
        compositor.Damage();
        QCOMPARE(pictures.Next(), Outcome::Taken);
        QCOMPARE(pictures.At(30, 10), kWhite);
    }
}

void WaylandPictureTest::layoutThatCannotBeIsRefused_data()
{
    QTest::addColumn<uint>("format");
    QTest::addColumn<uint>("width");
    QTest::addColumn<uint>("height");
    QTest::addColumn<uint>("stride");
    QTest::newRow("unknown format") << 0x12345678U << 64U << 48U << 256U;
    QTest::newRow("16 bits") << 0x36314752U << 64U << 48U << 256U;
    QTest::newRow("no width") << kXrgb8888 << 0U << 48U << 256U;
    QTest::newRow("no height") << kXrgb8888 << 64U << 0U << 256U;
    QTest::newRow("rows that overlap") << kXrgb8888 << 64U << 48U << 255U;
    QTest::newRow("no stride") << kXrgb8888 << 64U << 48U << 0U;
    QTest::newRow("immense") << kXrgb8888 << 0xffffffffU << 0xffffffffU << 0xffffffffU;
    QTest::newRow("product overflows") << kXrgb8888 << 0x40000000U << 48U << 0U;
    QTest::newRow("immense stride") << kXrgb8888 << 64U << 48U << 0x7fffffffU;
    QTest::newRow("wider than any monitor") << kXrgb8888 << 20000U << 2U << 80000U;
}

void WaylandPictureTest::layoutThatCannotBeIsRefused()
{
    QFETCH(uint, format);
    QFETCH(uint, width);
    QFETCH(uint, height);
    QFETCH(uint, stride);
    FakeCompositor behaviour;
    behaviour.format = format;
    behaviour.width = width;
    behaviour.height = height;
    behaviour.stride = stride;
    const RunningCompositor compositor(behaviour);
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(60ms), Outcome::Waiting);
    QVERIFY2(pictures.LostReason().ends_with("pictures of an unknown kind"),
             pictures.LostReason().c_str());
}

void WaylandPictureTest::layoutThatBecomesImpossibleLeavesTheLastPicture()
{
    RunningCompositor compositor(With({Answer::Copied}));
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    compositor.Change([](FakeCompositor& behaviour) { behaviour.stride = 3; });
    for (int i = 0; i < 5; ++i) {
        compositor.Damage();
        QCOMPARE(pictures.Next(100ms), Outcome::Unchanged);
    }
    compositor.Change([](FakeCompositor& behaviour) {
        behaviour.stride = 256;
        behaviour.pixel = 0;
    });
    compositor.Damage();
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.At(30, 10), kBlack);
}

void WaylandPictureTest::pictureThatChangesItsSizeFillsTheSameFrame()
{
    RunningCompositor compositor(With({Answer::Copied}));
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    for (const QSize& size : {QSize(16, 12), QSize(641, 481), QSize(128, 2), QSize(64, 48)}) {
        compositor.Change([&](FakeCompositor& behaviour) {
            behaviour.width = static_cast<uint32_t>(size.width());
            behaviour.height = static_cast<uint32_t>(size.height());
            behaviour.stride = behaviour.width * 4;
        });
        compositor.Damage();
        QCOMPARE(pictures.Next(), Outcome::Taken);
        QVERIFY(pictures.KeepsItsBounds());
    }
    QCOMPARE(pictures.At(30, 10), kWhite);
}

QTEST_GUILESS_MAIN(WaylandPictureTest)
#include "tool_wayland_picture_test.moc"
