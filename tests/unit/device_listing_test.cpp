#include "jobs/device_listing.h"

#include <QTest>
#include <QVariant>

namespace {

QString Line(const QString& text)
{
    return "[AVFoundation indev @ 0x7fee1fe05980] " + text + '\n';
}

QString Listing(const QStringList& video, const QStringList& audio)
{
    QString text = Line("AVFoundation video devices:");
    for (const QString& device : video) {
        text += Line(device);
    }
    text += Line("AVFoundation audio devices:");
    for (const QString& device : audio) {
        text += Line(device);
    }
    return text + " : Input/output error\n";
}

QString Choices(const DeviceListing& listing)
{
    QStringList texts;
    for (const AudioChoice& choice : listing.choices) {
        texts << QString("%1=%2").arg(choice.text).arg(choice.data);
    }
    return texts.join("; ");
}

} // namespace

class DeviceListingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCommandNamesABlankInput()
    {
        QCOMPARE(DeviceListCommand("\"/a b/tool\""),
                 QString("\"/a b/tool\" -f avfoundation -list_devices true -i \" \""));
    }

    void theAudioChoicesOfAListing_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("choices");
        QTest::addColumn<int>("microphone");
        QTest::addColumn<int>("sound");
        const QStringList screen{"[0] FaceTime HD Camera", "[1] Capture screen 0"};
        const QString both = "Computer sounds and Microphone=-1; Computer sounds=1; Microphone=0";

        QTest::newRow("microphone and loopback")
            << Listing(screen, {"[0] Built-in Microphone", "[1] Line Out Loopback"}) << both << 0
            << 1;
        QTest::newRow("nothing before the header")
            << QString("audio devices: [0] Microphone") << "Microphone=0" << 0 << -1;
        QTest::newRow("the last device is the microphone")
            << Listing(screen, {"[0] Built-in Microphone"}) << "Microphone=0" << 0 << -1;
        QTest::newRow("the last of two devices is the microphone")
            << Listing(screen, {"[0] Loopback", "[1] Built-in Microphone"}) << "Microphone=1" << 1
            << -1;
        QTest::newRow("a microphone before the audio devices does not count")
            << Line("[5] Microphone camera") + Listing(screen, {"[0] Line In"})
            << "Computer sounds=0" << -1 << 0;
        QTest::newRow("other letters are no microphone")
            << Listing(screen, {"[0] MICROPHONE", "[1] Loopback"}) << "Computer sounds=1" << -1
            << 1;
        QTest::newRow("one device that is no microphone")
            << Listing(screen, {"[0] Line In"}) << "Computer sounds=0" << -1 << 0;
        QTest::newRow("a microphone by a part of its name")
            << Listing(screen, {"[0] Internal Microphone Array", "[1] Loopback"}) << both << 0 << 1;
        QTest::newRow("the first of several microphones")
            << Listing(screen, {"[0] USB Microphone", "[1] Other Microphone", "[2] Loopback"})
            << "Computer sounds and Microphone=-1; Computer sounds=2; Microphone=0" << 0 << 2;
        QTest::newRow("an audio header without devices takes the last video device for the sound")
            << Listing(screen, {}) << "Computer sounds=1" << -1 << 1;
        QTest::newRow("ten devices and more")
            << Listing(screen, {"[9] Microphone", "[10] A", "[11] B"})
            << "Computer sounds and Microphone=-1; Computer sounds=11; Microphone=9" << 9 << 11;
        QTest::newRow("Windows line ends")
            << Listing(screen, {"[0] Built-in Microphone", "[1] Loopback"}).replace("\n", "\r\n")
            << both << 0 << 1;
        QTest::newRow("a bracket in a name counts as the last device's index")
            << Listing(screen, {"[0] Microphone", "[1] Box [7] out"})
            << "Computer sounds and Microphone=-1; Computer sounds=7; Microphone=0" << 0 << 7;
        QTest::newRow("no digits read as 0")
            << Listing(screen, {"[x] Line In"}) << "Computer sounds=0" << -1 << 0;
        QTest::newRow("no audio header")
            << Line("AVFoundation video devices:") + Line("[0] Capture screen 0") << QString() << -1
            << -1;
        QTest::newRow("nothing printed") << QString() << QString() << -1 << -1;
        QTest::newRow("cut off inside the last index")
            << QString("audio devices:\nx [") << "Computer sounds=0" << -1 << 0;
        QTest::newRow("a microphone before any index")
            << QString("audio devices: Microphone") << QString() << -1 << -1;
        QTest::newRow("capitals count")
            << Line("AVFoundation Audio Devices:") + Line("[0] Microphone") << QString() << -1
            << -1;
    }

    void theAudioChoicesOfAListing()
    {
        QFETCH(QString, text);
        const DeviceListing listing = ParseDeviceListing(text);
        QTEST(Choices(listing), "choices");
        QTEST(listing.microphone, "microphone");
        QTEST(listing.sound, "sound");
    }

    void theScreenOfAListing_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("screen");
        QTest::newRow("behind a camera")
            << Listing({"[0] Camera", "[1] Capture screen 0"}, {}) << int('1');
        QTest::newRow("the first of two screens")
            << Listing({"[0] Capture screen 0", "[1] Capture screen 1"}, {}) << int('0');
        QTest::newRow("a screen before the header does not count")
            << Line("[7] Capture screen 9") + Listing({"[2] Capture screen 0"}, {}) << int('2');
        QTest::newRow("other letters are no screen")
            << Listing({"[0] capture screen", "[1] Capture screen 0"}, {}) << int('1');
        QTest::newRow("device 12 keeps its first digit")
            << Listing({"[12] Capture screen 0"}, {}) << int('1');
        QTest::newRow("no screen") << Listing({"[0] Camera"}, {}) << 0;
        QTest::newRow("no header") << Line("[3] Capture screen 0") << 0;
        QTest::newRow("a header and nothing") << QString("video devices:") << 0;
        QTest::newRow("no index") << QString("video devices: Capture screen") << 0;
        QTest::newRow("nothing before the header")
            << QString("video devices: [5] Capture screen 0") << int('5');
    }

    void theScreenOfAListing()
    {
        QFETCH(QString, text);
        QTEST(int(ParseDeviceListing(text).screen), "screen");
    }

    void aHugeIndexDoesNotOverflow()
    {
        QCOMPARE(ParseDeviceListing("audio devices:\n [" + QString(100, '9') + ']').sound,
                 99999999);
    }

    void noneReadsAsMinusTwo() { QCOMPARE(QVariant(kAudioNone).toInt(), -2); }
};

QTEST_GUILESS_MAIN(DeviceListingTest)
#include "device_listing_test.moc"
