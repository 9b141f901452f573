#include "tool/devices/listing.h"
#include "tool/devices/remembered_devices.h"

#include <QTest>

using tool::Listing;
using tool::SoundDevice;
using tool::SoundServer;

namespace {

using Devices = std::vector<SoundDevice>;

SoundServer Server()
{
    return {{{"usb", "Headset Microphone", ""},
             {"out.monitor", "Monitor of Built-in Audio", "out"},
             {"tv.monitor", "Monitor of Television", "tv"},
             {"line", "Line In", ""}},
            "line",
            "out"};
}

} // namespace

class ToolListingTest : public QObject
{
    Q_OBJECT

private slots:
    void defaultMicrophoneLeadsAndComputerSoundsEnd();
    void computerSoundsNeverReadAsMicrophone();
    void withoutComputerSoundsOnlyOneMicrophoneIsOffered();
    void computerSoundsAlone();
    void bracketsAndLineBreaksAreTakenOutOfNames();
    void textIsThatOfMacOs();
    void withoutSoundThereIsNoSoundHeader();
    void withoutScreenTheReasonIsSaid();
    void rememberedNamesComeBack();
    void memoryOfAnotherServerOrACutOneIsIgnored();
};

void ToolListingTest::defaultMicrophoneLeadsAndComputerSoundsEnd()
{
    const Devices expected = {{"Microphone (Line In)", "line"},
                              {"Headset Microphone", "usb"},
                              {"Computer sounds (Built-in Audio)", tool::computerSounds}};
    QVERIFY(tool::ArrangeSoundDevices(Server()) == expected);
}

void ToolListingTest::computerSoundsNeverReadAsMicrophone()
{
    const SoundServer server{{{"m", "Monitor of Microphone Array", "s"}}, "", "s"};
    QCOMPARE(tool::ArrangeSoundDevices(server).front().title, "Computer sounds (Mic Array)");
    // What is left of the word must not form another one.
    const SoundServer twice{{{"m", "Monitor of Microphonerophone", "s"}}, "", "s"};
    QCOMPARE(tool::ArrangeSoundDevices(twice).front().title, "Computer sounds (Mic)");
}

void ToolListingTest::withoutComputerSoundsOnlyOneMicrophoneIsOffered()
{
    SoundServer server = Server();
    server.defaultSink = "gone";
    const Devices expected = {{"Microphone (Line In)", "line"}};
    QVERIFY(tool::ArrangeSoundDevices(server) == expected);
}

void ToolListingTest::computerSoundsAlone()
{
    const SoundServer server{{{"s.monitor", "", "s"}}, "s.monitor", "s"};
    const Devices expected = {{"Computer sounds (s.monitor)", tool::computerSounds}};
    QVERIFY(tool::ArrangeSoundDevices(server) == expected);
    QVERIFY(tool::ArrangeSoundDevices({}).empty());
}

void ToolListingTest::bracketsAndLineBreaksAreTakenOutOfNames()
{
    QCOMPARE(tool::PlainName("USB [Rev 2]\r\nMikrofon \xc3\xa4\x7f"),
             "USB (Rev 2)  Mikrofon \xc3\xa4 ");
    QCOMPARE(tool::PlainName("Capture screen 0"), "Capture-screen 0");
    QCOMPARE(tool::PlainName("My audio devices::"), "My audio devices");
}

void ToolListingTest::textIsThatOfMacOs()
{
    Listing listing;
    listing.screens = 2;
    listing.sound = {{"Microphone (Line In)", "line"}, {"Computer sounds (TV)", "tv"}};
    QCOMPARE(tool::ListingText(listing, 0x7fee1fe05980),
             "[AVFoundation indev @ 0x7fee1fe05980] AVFoundation video devices:\n"
             "[AVFoundation indev @ 0x7fee1fe05980] [0] Capture screen 0\n"
             "[AVFoundation indev @ 0x7fee1fe05980] [1] Capture screen 1\n"
             "[AVFoundation indev @ 0x7fee1fe05980] AVFoundation audio devices:\n"
             "[AVFoundation indev @ 0x7fee1fe05980] [0] Microphone (Line In)\n"
             "[AVFoundation indev @ 0x7fee1fe05980] [1] Computer sounds (TV)\n"
             " : Input/output error\n");
}

void ToolListingTest::withoutSoundThereIsNoSoundHeader()
{
    Listing listing;
    listing.screens = 1;
    QVERIFY(tool::ListingText(listing, 1).find("audio devices:") == std::string::npos);
}

void ToolListingTest::withoutScreenTheReasonIsSaid()
{
    Listing listing;
    listing.noScreenReason = "No screen: the display [x] is gone.";
    const std::string text = tool::ListingText(listing, 1);
    QVERIFY(text.find("Capture screen") == std::string::npos);
    QVERIFY(text.find("No screen: the display (x) is gone.\n") != std::string::npos);
    QVERIFY(text.find(" [") == std::string::npos);
}

void ToolListingTest::rememberedNamesComeBack()
{
    const std::vector<std::string> names = {"alsa_input.usb-1", tool::computerSounds};
    const std::string text = tool::RememberedText("unix:/x", names);
    QVERIFY(tool::ParseRemembered(text, "unix:/x") == names);
    QVERIFY(tool::ParseRemembered(tool::RememberedText("", {}), "")->empty());
}

void ToolListingTest::memoryOfAnotherServerOrACutOneIsIgnored()
{
    const std::string text = tool::RememberedText("unix:/x", {"a", "b"});
    QVERIFY(!tool::ParseRemembered(text, ""));
    QVERIFY(!tool::ParseRemembered(text, "unix:/y"));
    QVERIFY(!tool::ParseRemembered(text.substr(0, text.size() - 1), "unix:/x"));
    QVERIFY(!tool::ParseRemembered("", ""));
}

QTEST_APPLESS_MAIN(ToolListingTest)
#include "tool_listing_test.moc"
