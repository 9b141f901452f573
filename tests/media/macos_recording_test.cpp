// Recordings by `tool` as on macOS, with a stand-in for Apple's part of ffmpeg.
#include "tests/support/macos/av_signal.h"
#include "tests/support/macos/mac.h"
#include "tests/support/ordinary_movie.h"
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QTest>

#include <memory>
#include <vector>

namespace {

QByteArray List()
{
    return RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", " "})
        .error;
}

// Codec, pixel format, width and height of the picture.
QByteArray PictureOf(const QString& path)
{
    return RunProgram("ffprobe", {"-v", "error", "-select_streams", "v", "-show_entries",
                                  "stream=codec_name,pix_fmt,width,height", "-of", "csv=p=0", path})
        .output.trimmed();
}

} // namespace

class MacosRecordingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void listIsTheOneTheRecorderReads();
    void twoSoundsBecomeOneTrackInStep_data();
    void twoSoundsBecomeOneTrackInStep();
    void oneDeviceOrNone_data();
    void oneDeviceOrNone();
    void oddScreenLosesOnePixel();
    void chosenDeviceIsRecordedAfterAnotherWasPluggedIn();
    void deviceThatIsGoneRefusesTheRecording();
    void screenThatIsNotListedRefusesTheRecording();
    void silentDeviceDoesNotStopTheRecording();
    void quitAtAnyMomentLeavesAMovie();
    void lostScreenEndsTheRecording();
    void oddNamesAreRecordedTo();
    void recordingsAreTrimmedAndJoined();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    // Records until that many seconds are in the file.
    void Record(Take& take, double seconds = 1);

    std::unique_ptr<Mac> m_mac;
};

void MacosRecordingTest::initTestCase()
{
    m_mac = std::make_unique<Mac>("uid");
}

void MacosRecordingTest::init()
{
    Mac::Use("uid");
    List();
    m_mac->TakeCaptures();
}

void MacosRecordingTest::Record(Take& take, double seconds)
{
    QTRY_VERIFY2_WITH_TIMEOUT(take.Taken() >= seconds || take.HasEnded(), take.Text(), 60000);
    take.Type("q\r\n");
    QVERIFY2(take.WaitForEnd() && take.ExitCode() == 0, take.Text());
    QVERIFY2(IsOrdinary(take.Path()), "it is still fragmented");
    QCOMPARE(DecodingErrors(take.Path()), QByteArray());
}

void MacosRecordingTest::listIsTheOneTheRecorderReads()
{
    QByteArrayList names;
    for (const QByteArray& line : List().split('\n')) {
        names << line.mid(line.indexOf("] ") + 2);
    }
    QCOMPARE(names.mid(0, 6),
             (QByteArrayList{"AVFoundation video devices:", "[0] Capture screen 0",
                             "AVFoundation audio devices:", "[0] MacBook Pro Microphone",
                             "[1] iPhone Microphone", "[2] Computer sounds (BlackHole 2ch)"}));
}

void MacosRecordingTest::twoSoundsBecomeOneTrackInStep_data()
{
    QTest::addColumn<QByteArray>("clock");
    QTest::addColumn<double>("tolerance"); // seconds; a frame is 0.033
    QTest::newRow("exact times") << QByteArray() << 0.07;
    QTest::newRow("times that are some milliseconds off") << QByteArray("rough") << 0.14;
}

// The microphone is ffmpeg's device 3, the computer's sounds are its device 1.
void MacosRecordingTest::twoSoundsBecomeOneTrackInStep()
{
    QFETCH(QByteArray, clock);
    QFETCH(double, tolerance);
    Take take(m_mac->Path(clock + "both.mp4"), "0:0 0:2", {"MAC_CLOCK_IS=" + clock});
    Record(take, 5);
    QCOMPARE(m_mac->TakeCaptures(), (QByteArrayList{"3:3 cursor=1", ":1 cursor=0"}));
    QVERIFY2(AvFlashes(take.Path()).size() >= 4, "the screen's flashes are missing");
    for (const int device : {3, 1}) {
        const double offset = AvWorstOffset(take.Path(), device);
        QVERIFY2(offset <= tolerance,
                 qPrintable(QString("device %1 is off by %2 s").arg(device).arg(offset)));
    }
}

void MacosRecordingTest::oneDeviceOrNone_data()
{
    QTest::addColumn<QString>("machine");
    QTest::addColumn<QString>("devices");
    QTest::addColumn<QByteArray>("capture");
    QTest::addColumn<int>("tone"); // ffmpeg's number of the device; -1: no sound
    QTest::newRow("none") << "uid"
                          << "0" << QByteArray("3") << -1;
    QTest::newRow("microphone") << "uid"
                                << "0:0" << QByteArray("3:3") << 3;
    QTest::newRow("computer sounds, second screen") << "old"
                                                    << "1:1" << QByteArray("2:0") << 0;
    QTest::newRow("third screen among cameras") << "studio"
                                                << "2:1" << QByteArray("4:2") << 2;
}

void MacosRecordingTest::oneDeviceOrNone()
{
    QFETCH(QString, machine);
    QFETCH(QString, devices);
    QFETCH(QByteArray, capture);
    QFETCH(int, tone);
    Mac::Use(machine);
    List();
    Take take(m_mac->Path(QString(QTest::currentDataTag()) + ".mp4"), devices);
    Record(take, 1.5);
    QCOMPARE(m_mac->TakeCaptures(), QByteArrayList{capture + " cursor=1"});
    QCOMPARE(PictureOf(take.Path()), QByteArray("h264,640,400,yuv420p"));
    const std::vector<int16_t> samples = AvSamples(take.Path());
    QCOMPARE(samples.empty(), tone < 0);
    QVERIFY2(tone < 0 || !BeepTimes(samples, kAvSoundRate, AvTone(tone)).empty(), "it is silent");
}

void MacosRecordingTest::oddScreenLosesOnePixel()
{
    Take take(m_mac->Path("odd.mp4"), "0:0", {"MAC_SCREEN=683x385"});
    Record(take);
    QCOMPARE(PictureOf(take.Path()), QByteArray("h264,682,384,yuv420p"));
}

// The list is from before; the headset has moved the microphone from number 0 to 1 and the
// computer's sounds from 1 to 2.
void MacosRecordingTest::chosenDeviceIsRecordedAfterAnotherWasPluggedIn()
{
    Mac::Use("german");
    List();
    const QByteArray tag = "[AVFoundation indev @ 0x7f8a5a704080] [";
    QByteArray text = Content(MachineFile("german"));
    text.replace(tag + "2]", tag + "3]");
    text.replace(tag + "1] Haupt", tag + "2] Haupt");
    text.replace(tag + "0] MacBook", tag + "0] Neu\n" + tag + "1] MacBook");
    QVERIFY(Write(m_mac->Path("changed"), text));
    Take take(m_mac->Path("changed.mp4"), "0:0 0:2", {"MAC_MACHINE=" + m_mac->Path("changed")});
    Record(take);
    QCOMPARE(m_mac->TakeCaptures(), (QByteArrayList{"1:1 cursor=1", ":2 cursor=0"}));
}

void MacosRecordingTest::deviceThatIsGoneRefusesTheRecording()
{
    Take take(m_mac->Path("gone.mp4"), "0:0", {"MAC_MACHINE=" + MachineFile("no_microphone")});
    QVERIFY(take.WaitForEnd());
    QCOMPARE(take.ExitCode(), 1);
    QVERIFY2(take.Text().contains("tool: audio device 0 is not connected any more"), take.Text());
    QVERIFY2(!QFile::exists(take.Path()), "a file is left");
}

void MacosRecordingTest::screenThatIsNotListedRefusesTheRecording()
{
    Take take(m_mac->Path("screen.mp4"), "1");
    QVERIFY(take.WaitForEnd());
    QCOMPARE(take.ExitCode(), 1);
    QCOMPARE(take.Text(), QByteArray("tool: there is no screen 1, the list has 1.\n"));
}

void MacosRecordingTest::silentDeviceDoesNotStopTheRecording()
{
    Take take(m_mac->Path("silent.mp4"), "0:0 0:2", {"MAC_SOUND_IS=silent"});
    Record(take);
    QVERIFY2(AvSamples(take.Path()).size() > kAvSoundRate / 2, "the track is missing");
}

void MacosRecordingTest::quitAtAnyMomentLeavesAMovie()
{
    std::vector<std::unique_ptr<Take>> takes;
    constexpr int count = 8;
    for (int i = 0; i < count; ++i) {
        takes.push_back(std::make_unique<Take>(m_mac->Path(QString("quit %1.mp4").arg(i)),
                                               i % 2 == 0 ? "0:0" : "0",
                                               QStringList{"MAC_SCREEN=160x120"}));
        takes.back()->Type(i < 2 ? "q\r\n" : "");
    }
    for (int i = 2; i < count; ++i) {
        QTest::qWait(150); // each at a later moment, whatever has happened by then
        takes[static_cast<size_t>(i)]->Type("q\r\n");
    }
    for (const auto& take : takes) {
        QVERIFY2(take->WaitForEnd() && take->ExitCode() == 0, take->Text());
        QVERIFY2(IsOrdinary(take->Path()), qPrintable(take->Path()));
        QCOMPARE(DecodingErrors(take->Path()), QByteArray());
        QVERIFY2(!AvBrightness(take->Path()).isEmpty(), "it has no picture");
    }
}

void MacosRecordingTest::lostScreenEndsTheRecording()
{
    Take take(m_mac->Path("lost.mp4"), "0", {"MAC_SCREEN_IS=lost"});
    QVERIFY2(take.WaitForEnd() && take.ExitCode() == 0, take.Text());
    QVERIFY2(IsOrdinary(take.Path()), "it is still fragmented");
    QVERIFY2(AvBrightness(take.Path()).size() > 45, "most of it is lost");
}

void MacosRecordingTest::oddNamesAreRecordedTo()
{
    std::vector<std::unique_ptr<Take>> takes;
    for (const char* name :
         {"\xc3\xa9t\xc3\xa9 1.mp4", "pipe:1.mp4", "%d'[a]|$(b);.mp4", "a\nb.mp4"}) {
        takes.push_back(std::make_unique<Take>(m_mac->Path(QString::fromUtf8(name)), "0:0",
                                               QStringList{"MAC_SCREEN=160x120"}));
    }
    for (const auto& take : takes) {
        Record(*take, 0.5);
        QVERIFY2(!AvBrightness(take->Path()).isEmpty(), "it has no picture");
    }
}

void MacosRecordingTest::recordingsAreTrimmedAndJoined()
{
    Take take(m_mac->Path("whole.mp4"), "0:0 0:2");
    Record(take, 3.5);
    const QString cut = m_mac->Path("cut.mp4");
    const Outcome trimmed =
        RunProgram(TOOL_PROGRAM, {"-i", take.Path(), "-ss", "1", "-t", "2", "-codec", "copy", cut});
    QVERIFY2(trimmed.code == 0, trimmed.error);
    const QStringList parts = {m_mac->Path("1.ts"), m_mac->Path("2.ts")};
    const QStringList sources = {take.Path(), cut};
    for (int i = 0; i < 2; ++i) {
        const Outcome converted =
            RunProgram(TOOL_PROGRAM, {"-i", sources[i], "-vcodec", "copy", "-acodec", "copy",
                                      "-vbsf", "h264_mp4toannexb", parts[i]});
        QVERIFY2(converted.code == 0, converted.error);
    }
    const QString joined = m_mac->Path("joined.mp4");
    const Outcome join =
        RunProgram(TOOL_PROGRAM, {"-i", "concat:" + parts.join('|') + "|", "-acodec", "copy",
                                  "-vcodec", "copy", "-absf", "aac_adtstoasc", joined});
    QVERIFY2(join.code == 0, join.error);
    QCOMPARE(DecodingErrors(joined), QByteArray());
    const double whole = DurationIn(RunProgram(TOOL_PROGRAM, {"-i", take.Path()}).error);
    const double both = DurationIn(RunProgram(TOOL_PROGRAM, {"-i", joined}).error);
    QVERIFY2(std::abs(both - whole - 2) < 0.2, qPrintable(QString::number(both)));
}

QTEST_GUILESS_MAIN(MacosRecordingTest)
#include "macos_recording_test.moc"
