// What the recorder finds on real Macs, and that numbers keep their meaning.
#include "jobs/device_listing.h"
#include "tests/support/files.h"
#include "tests/support/macos/mac.h"
#include "tool/avfoundation/device_text.h"
#include "tool/avfoundation/sound_arrangement.h"

#include <QTest>

using tool::AvDevice;
using tool::AvDevices;
using tool::SoundDevice;

namespace {

AvDevices DevicesOf(const QString& machine)
{
    return tool::ParseDeviceText(Content(MachineFile(machine)).toStdString());
}

// What the recorder reads in the list that `tool` prints for these devices.
DeviceListing Offered(const AvDevices& devices)
{
    tool::Listing listing;
    listing.screens = devices.video.size() - tool::FirstScreen(devices.video);
    listing.sound = tool::ArrangeAvSound(devices.sound);
    return ParseDeviceListing(QString::fromStdString(tool::ListingText(listing, 0x7f0000001000)));
}

// ffmpeg's number for a number of the list; -1 for none.
int NumberFor(int listed, const AvDevices& devices)
{
    if (listed < 0) {
        return -1;
    }
    const auto sound = tool::ArrangeAvSound(devices.sound);
    const auto place = tool::PlaceOf(sound.at(static_cast<size_t>(listed)).source, devices.sound);
    return place ? static_cast<int>(*place) : -1;
}

} // namespace

class ToolAvDevicesTest : public QObject
{
    Q_OBJECT

private slots:
    void recorderChoosesRight_data();
    void recorderChoosesRight();
    void namesAndIdentitiesAreRead();
    void textThatIsNoListHasNoDevices_data();
    void textThatIsNoListHasNoDevices();
    void cameraCalledLikeAScreenIsNone();
    void everyMicrophoneIsCalledOne();
    void programsForMeetingsAreLeftOut();
    void oddNamesDoNotMislead_data();
    void oddNamesDoNotMislead();
    void numbersMeanTheSameDeviceLater_data();
    void numbersMeanTheSameDeviceLater();
};

void ToolAvDevicesTest::recorderChoosesRight_data()
{
    QTest::addColumn<size_t>("firstScreen");
    QTest::addColumn<size_t>("videoDevices");
    QTest::addColumn<int>("microphone"); // ffmpeg's number, or -1
    QTest::addColumn<int>("computerSounds");
    QTest::newRow("old") << size_t{1} << size_t{3} << 2 << 0;
    QTest::newRow("uid") << size_t{3} << size_t{4} << 3 << 1;
    QTest::newRow("german") << size_t{1} << size_t{2} << 0 << 1;
    QTest::newRow("no_microphone") << size_t{0} << size_t{1} << -1 << -1;
    QTest::newRow("studio") << size_t{2} << size_t{5} << 1 << 0;
}

void ToolAvDevicesTest::recorderChoosesRight()
{
    QFETCH(size_t, firstScreen);
    QFETCH(size_t, videoDevices);
    QFETCH(int, microphone);
    QFETCH(int, computerSounds);
    const AvDevices devices = DevicesOf(QTest::currentDataTag());
    QVERIFY2(devices.isListed, "the list is not recognised");
    QCOMPARE(devices.video.size(), videoDevices);
    QCOMPARE(tool::FirstScreen(devices.video), firstScreen);
    const DeviceListing offered = Offered(devices);
    QCOMPARE(offered.screen, '0');
    QCOMPARE(NumberFor(offered.microphone, devices), microphone);
    QCOMPARE(NumberFor(offered.sound, devices), computerSounds);
}

void ToolAvDevicesTest::namesAndIdentitiesAreRead()
{
    const AvDevices devices = DevicesOf("uid");
    const AvDevice microphone = {"MacBook Pro Microphone", "BuiltInMicrophoneDevice"};
    QVERIFY(devices.sound.at(3) == microphone);
    QCOMPARE(devices.video.back().name, std::string("Capture screen 0"));
    const AvDevice headset = {"Headset von J\xc3\xb6rg [schwarz]", ""};
    QVERIFY(DevicesOf("german").sound.at(2) == headset);
}

void ToolAvDevicesTest::textThatIsNoListHasNoDevices_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("another system") << QByteArray("Unknown input format: 'avfoundation'\n");
    QTest::newRow("device before the header") << QByteArray("[AVFoundation indev @ 0x1] [0] x\n");
    QTest::newRow("another component")
        << QByteArray("[AVFoundation indev @ 0x1] AVFoundation video devices:\n[x @ 0x1] [0] y\n");
    QTest::newRow("number out of turn")
        << QByteArray("[AVFoundation indev @ 0x1] AVFoundation video devices:\n"
                      "[AVFoundation indev @ 0x1] [7] y\n");
}

void ToolAvDevicesTest::textThatIsNoListHasNoDevices()
{
    QFETCH(QByteArray, text);
    const AvDevices devices = tool::ParseDeviceText(text.toStdString());
    QVERIFY(devices.video.empty() && devices.sound.empty());
}

void ToolAvDevicesTest::cameraCalledLikeAScreenIsNone()
{
    const auto first = [](const std::vector<AvDevice>& video) { return tool::FirstScreen(video); };
    const AvDevice camera = {"Camera", ""};
    const AvDevice zero = {"Capture screen 0", ""};
    const AvDevice one = {"Capture screen 1", ""};
    QCOMPARE(first({zero, zero}), size_t{1});
    QCOMPARE(first({one, zero}), size_t{1});
    QCOMPARE(first({zero, camera}), size_t{2});
    QCOMPARE(first({camera, zero, one}), size_t{1});
    QCOMPARE(first({one}), size_t{1});
    QCOMPARE(first({}), size_t{0});
}

void ToolAvDevicesTest::everyMicrophoneIsCalledOne()
{
    const std::vector<AvDevice> devices = {{"Mikrofon", ""},
                                           {"\xe3\x83\x9e\xe3\x82\xa4\xe3\x82\xaf", ""},
                                           {"Built-in Microphone", ""},
                                           {"BlackHole 2ch", ""}};
    const std::vector<SoundDevice> expected = {
        {"Microphone (Mikrofon)", "name 0 Mikrofon"},
        {"Microphone (\xe3\x83\x9e\xe3\x82\xa4\xe3\x82\xaf)",
         "name 0 \xe3\x83\x9e\xe3\x82\xa4\xe3\x82\xaf"},
        {"Built-in Microphone", "name 0 Built-in Microphone"},
        {"Computer sounds (BlackHole 2ch)", "name 0 BlackHole 2ch"}};
    QVERIFY(tool::ArrangeAvSound(devices) == expected);
}

void ToolAvDevicesTest::programsForMeetingsAreLeftOut()
{
    const std::vector<SoundDevice> expected = {{"Microphone (Line In)", "uid L"}};
    QVERIFY(tool::ArrangeAvSound(
                {{"ZoomAudioDevice", "Z"}, {"Line In", "L"}, {"Microsoft Teams Audio", "T"}}) ==
            expected);
}

void ToolAvDevicesTest::oddNamesDoNotMislead_data()
{
    QTest::addColumn<std::string>("name");
    for (const char* name :
         {"Capture screen 0", "AVFoundation audio devices:", "Mic] [9] Microphone", " [9] x", "",
          "\x01\xff\x7f", "[uid:", "[uid:]", "audio devices: [8", "a\rb", "-i", "\"; rm"}) {
        QTest::newRow(name) << std::string(name);
    }
}

void ToolAvDevicesTest::oddNamesDoNotMislead()
{
    QFETCH(std::string, name);
    const std::string tag = "[AVFoundation indev @ 0x1] ";
    const AvDevices devices = tool::ParseDeviceText(
        tag + "AVFoundation video devices:\n" + tag + "[0] " + name + "\n" + tag +
        "[1] Capture screen 0\n" + tag + "AVFoundation audio devices:\n" + tag + "[0] " + name +
        "\n" + tag + "[1] Loopback Audio\n");
    QCOMPARE(devices.sound.size(), size_t{2});
    QCOMPARE(tool::FirstScreen(devices.video), size_t{1});
    const DeviceListing offered = Offered(devices);
    QCOMPARE(offered.screen, '0');
    QCOMPARE(NumberFor(offered.microphone, devices), 0);
    QCOMPARE(NumberFor(offered.sound, devices), 1);
}

void ToolAvDevicesTest::numbersMeanTheSameDeviceLater_data()
{
    using Devices = std::vector<AvDevice>;
    QTest::addColumn<Devices>("before");
    QTest::addColumn<Devices>("after");
    QTest::addColumn<int>("place"); // of the first microphone; -1: gone
    const AvDevice own = {"Built-in", "B"};
    const AvDevice renamed = {"Eingebaut", "B"};
    const AvDevice headset = {"Headset", "H"};
    const AvDevice usb = {"USB", ""};
    const AvDevice other = {"Other", ""};
    QTest::newRow("plugged in before it") << Devices{own} << Devices{headset, own} << 1;
    QTest::newRow("renamed") << Devices{own} << Devices{headset, renamed} << 1;
    QTest::newRow("unplugged") << Devices{headset, own} << Devices{own} << -1;
    QTest::newRow("by name") << Devices{usb} << Devices{other, usb} << 1;
    QTest::newRow("two of a name") << Devices{usb, usb} << Devices{other, usb, usb} << 1;
}

void ToolAvDevicesTest::numbersMeanTheSameDeviceLater()
{
    using Devices = std::vector<AvDevice>;
    QFETCH(Devices, before);
    QFETCH(Devices, after);
    QFETCH(int, place);
    const std::string source = tool::ArrangeAvSound(before).front().source;
    const auto found = tool::PlaceOf(source, after);
    QCOMPARE(found ? static_cast<int>(*found) : -1, place);
}

QTEST_APPLESS_MAIN(ToolAvDevicesTest)
#include "tool_av_devices_test.moc"
