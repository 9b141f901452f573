#include "tool/feed/picture_clock.h"

#include <QTest>

using namespace std::chrono_literals;
using tool::ParseRate;
using tool::PictureClock;
using tool::PictureRate;
using tool::SteadyTime;

class ToolPictureClockTest : public QObject
{
    Q_OBJECT

private slots:
    static void ratesAreReadExactly_data();
    static void ratesAreReadExactly();
    static void otherRatesAreLeftToFfmpeg_data();
    static void otherRatesAreLeftToFfmpeg();
    static void everyPictureIsDueAtItsMultipleOfTheRate();
    static void pictureTakenWhenDueFillsItsPlace();
    static void lateGrabLeavesOutThePlacesItMissed();
    static void oneGrabNeverFillsAPlaceTwice();
};

void ToolPictureClockTest::ratesAreReadExactly_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("pictures");
    QTest::addColumn<int>("seconds");
    QTest::newRow("30") << QByteArray("30") << 30 << 1;
    QTest::newRow("29.97") << QByteArray("29.97") << 2997 << 100;
    QTest::newRow("30000/1001") << QByteArray("30000/1001") << 30000 << 1001;
    QTest::newRow("12.5") << QByteArray("12.5") << 25 << 2;
    QTest::newRow("the highest") << QByteArray("1000") << 1000 << 1;
}

void ToolPictureClockTest::ratesAreReadExactly()
{
    QFETCH(QByteArray, text);
    QFETCH(int, pictures);
    QFETCH(int, seconds);
    const auto rate = ParseRate(text.toStdString());
    QVERIFY(rate.has_value());
    QCOMPARE(rate->pictures, pictures);
    QCOMPARE(rate->seconds, seconds);
}

void ToolPictureClockTest::otherRatesAreLeftToFfmpeg_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char* text : {"", "ntsc", "0", "-30", "30/0", "30/", ".", "30.", "1001", "+30",
                             "29.97 ", "1e3", "99999999999", "1.2.3", "29.970000000"}) {
        QTest::newRow(*text == '\0' ? "empty" : text) << QByteArray(text);
    }
}

void ToolPictureClockTest::otherRatesAreLeftToFfmpeg()
{
    QFETCH(QByteArray, text);
    QVERIFY2(!ParseRate(text.toStdString()), text);
}

void ToolPictureClockTest::everyPictureIsDueAtItsMultipleOfTheRate()
{
    const SteadyTime start{123456789ns};
    const PictureClock clock({2997, 100}, start);
    QCOMPARE((clock.Due(0) - start).count(), 0);
    QCOMPARE((clock.Due(1) - start).count(), 33366701);
    // No drift at all after an hour.
    const int64_t late = int64_t{2997} * 36;
    QCOMPARE((clock.Due(late) - start).count(), int64_t{3600} * 1000000000);
    QCOMPARE((clock.Due(late + 1) - clock.Due(late)).count(), 33366701);
}

void ToolPictureClockTest::pictureTakenWhenDueFillsItsPlace()
{
    const SteadyTime start{5s};
    for (const PictureRate rate : {PictureRate{30, 1}, {2997, 100}, {30000, 1001}, {7, 3}}) {
        const PictureClock clock(rate, start);
        for (const int64_t place : {0LL, 1LL, 2LL, 29LL, 1000LL, 12345678LL, 1000000000LL}) {
            QCOMPARE(clock.PlaceAt(clock.Due(place), 0), place);
            QCOMPARE(clock.PlaceAt(clock.Due(place + 1) - 1ns, 0), place);
        }
    }
}

void ToolPictureClockTest::lateGrabLeavesOutThePlacesItMissed()
{
    const PictureClock clock({10, 1}, SteadyTime{});
    QCOMPARE(clock.PlaceAt(SteadyTime{299ms}, 2), 2);
    QCOMPARE(clock.PlaceAt(SteadyTime{3s}, 3), 30);
}

// Otherwise frames would come in a burst after a stall.
void ToolPictureClockTest::oneGrabNeverFillsAPlaceTwice()
{
    const PictureClock clock({10, 1}, SteadyTime{});
    QCOMPARE(clock.PlaceAt(SteadyTime{250ms}, 3), 3);
    QCOMPARE(clock.PlaceAt(SteadyTime{0ms}, 3), 3);
}

QTEST_GUILESS_MAIN(ToolPictureClockTest)
#include "tool_picture_clock_test.moc"
