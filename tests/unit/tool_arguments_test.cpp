#include "tool/command/arguments.h"

#include <QTest>

#include <algorithm>

using tool::Arguments;
using tool::CapturePlan;
using tool::Request;
using tool::RequestKind;

namespace {

const Arguments outputOptions = {"-ar",
                                 "44100",
                                 "-r",
                                 "29.97",
                                 "-preset",
                                 "ultrafast",
                                 "-max_muxing_queue_size",
                                 "9999",
                                 "-async",
                                 "1",
                                 "-pix_fmt",
                                 "yuv420p",
                                 "/v/2018-05-01 14-03-27.mp4"};

Arguments Recording(const Arguments& inputs)
{
    Arguments all = inputs;
    all.insert(all.end(), outputOptions.begin(), outputOptions.end());
    return all;
}

const Arguments silent = Recording({"-f", "avfoundation", "-framerate", "30", "-i", "0"});
const Arguments oneSound = Recording({"-f", "avfoundation", "-framerate", "30", "-i", "0:2"});
const Arguments twoSounds = Recording(
    {"-f", "avfoundation", "-framerate", "30", "-i", "1:0", "-f", "avfoundation", "-i", "1:3"});

CapturePlan Plan(std::optional<int> soundPipe)
{
    return {":4", {100, 20, 1280, 800}, soundPipe, true};
}

// The position of these consecutive words, or -1.
ptrdiff_t Find(const Arguments& where, const Arguments& words)
{
    const auto at = std::search(where.begin(), where.end(), words.begin(), words.end());
    return at == where.end() ? -1 : at - where.begin();
}

bool Has(const Arguments& where, const Arguments& words)
{
    return Find(where, words) >= 0;
}

QString Shown(const Arguments& arguments)
{
    QStringList words;
    for (const std::string& argument : arguments) {
        words << QString::fromStdString(argument);
    }
    return words.join(QStringLiteral(" | "));
}

} // namespace

class ToolArgumentsTest : public QObject
{
    Q_OBJECT

private slots:
    void listingIsRecognised();
    void eachSoundChoiceNamesItsDevices();
    void malformedNamesAreRefused_data();
    void malformedNamesAreRefused();
    void otherCommandsPassThroughByteForByte();
    void removedOptionsAreRenamed();
    void inputNamesAreNeverRenamed();
    void silentRecordingOpensTheScreenOnly();
    void picturesFromAPipeAreTakenAsTheyCome();
    void onlyPicturesOfTheUsualColoursMayBeConverted();
    void soundFollowsTheScreen();
    void secondInputAddsNoSecondScreen();
    void syncOptionBecomesAFilter();
    void framesComeAtTheRateOfTheFile();
    void keyFramesAreUnderTwoSecondsApart();
    void moviesAreRecordedInPieces_data();
    void moviesAreRecordedInPieces();
    void whatIsRecordedReachesTheFileAtOnce();
    void filtersOfTheCallerAreKept();
    void statusPeriodOnlyWhereKnown();
    void oddSizesLoseOnePixel();
    void sampleRatesOutsideTheLimitsAreTheUsualOne_data();
    void sampleRatesOutsideTheLimitsAreTheUsualOne();
};

void ToolArgumentsTest::listingIsRecognised()
{
    const Request request =
        tool::ReadRequest({"-f", "avfoundation", "-list_devices", "true", "-i", " "});
    QCOMPARE(request.kind, RequestKind::ListDevices);
    QCOMPARE(tool::ReadRequest({"-list_devices", "true", "-i", " "}).kind,
             RequestKind::PassThrough);
    QCOMPARE(tool::ReadRequest({}).kind, RequestKind::PassThrough);
}

void ToolArgumentsTest::eachSoundChoiceNamesItsDevices()
{
    QCOMPARE(tool::ReadRequest(silent).kind, RequestKind::Capture);
    QVERIFY(tool::ReadRequest(silent).audio.empty());
    QCOMPARE(tool::ReadRequest(oneSound).audio, std::vector<int>({2}));
    const Request both = tool::ReadRequest(twoSounds);
    QCOMPARE(both.screen, 1);
    QCOMPARE(both.audio, std::vector<int>({0, 3}));
    // The same device twice would be mixed with itself.
    const Request same = tool::ReadRequest(
        Recording({"-f", "avfoundation", "-i", "1:3", "-f", "avfoundation", "-i", "1:3"}));
    QCOMPARE(same.audio, std::vector<int>({3}));
}

void ToolArgumentsTest::malformedNamesAreRefused_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"", ":", "0:", ":1", "a", "0:x", "-1", "0:-2", "0 ", "0:1:2", " 0",
                             "99999999999", "0:99999999999"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void ToolArgumentsTest::malformedNamesAreRefused()
{
    QFETCH(QString, name);
    const Request request =
        tool::ReadRequest(Recording({"-f", "avfoundation", "-i", name.toStdString()}));
    QCOMPARE(request.kind, RequestKind::Malformed);
    const std::string quoted = QStringLiteral("\"%1\"").arg(name).toStdString();
    QVERIFY2(request.error.find(quoted) != std::string::npos, request.error.c_str());
}

void ToolArgumentsTest::otherCommandsPassThroughByteForByte()
{
    const Arguments strange = {"-i",
                               "/v/a \"b\"\n'c' \xc3\xa4\xff.mp4",
                               "-ss",
                               "10",
                               "-t",
                               "15",
                               "-codec",
                               "copy",
                               "",
                               " ",
                               "/out/Cut_\t.mp4"};
    QCOMPARE(tool::TranslatePassThrough(strange), strange);
    const Arguments endsInInput = {"-y", "-i"};
    QCOMPARE(tool::TranslatePassThrough(endsInInput), endsInInput);
}

void ToolArgumentsTest::removedOptionsAreRenamed()
{
    QCOMPARE(tool::TranslatePassThrough({"-i", "a.mp4", "-vcodec", "copy", "-acodec", "copy",
                                         "-vbsf", "h264_mp4toannexb", "1.ts"}),
             Arguments({"-i", "a.mp4", "-vcodec", "copy", "-acodec", "copy", "-bsf:v",
                        "h264_mp4toannexb", "1.ts"}));
    QCOMPARE(tool::TranslatePassThrough({"-i", "concat:1.ts|2.ts|", "-acodec", "copy", "-vcodec",
                                         "copy", "-absf", "aac_adtstoasc", "o.mp4"}),
             Arguments({"-i", "concat:1.ts|2.ts|", "-acodec", "copy", "-vcodec", "copy", "-bsf:a",
                        "aac_adtstoasc", "o.mp4"}));
}

void ToolArgumentsTest::inputNamesAreNeverRenamed()
{
    const Arguments named = {"-i", "-vbsf", "o.mp4"};
    QCOMPARE(tool::TranslatePassThrough(named), named);
}

void ToolArgumentsTest::silentRecordingOpensTheScreenOnly()
{
    const Arguments result = tool::TranslateCapture(silent, Plan(std::nullopt));
    QVERIFY2(Has(result, {"-f", "x11grab"}), qPrintable(Shown(result)));
    QVERIFY2(Has(result, {"-video_size", "1280x800", "-draw_mouse", "1", "-grab_x", "100",
                          "-grab_y", "20", "-i", ":4"}),
             qPrintable(Shown(result)));
    QCOMPARE(std::count(result.begin(), result.end(), "-i"), 1);
    for (const char* gone : {"avfoundation", "-async", "-af", "-y"}) {
        QVERIFY2(!Has(result, {gone}), gone);
    }
    for (const Arguments& kept :
         {Arguments{"-ar", "44100"}, Arguments{"-r", "29.97"}, Arguments{"-preset", "ultrafast"},
          Arguments{"-max_muxing_queue_size", "9999"}, Arguments{"-pix_fmt", "yuv420p"}}) {
        QVERIFY2(Has(result, kept), qPrintable(Shown(kept)));
    }
    QCOMPARE(result.back(), outputOptions.back());
}

void ToolArgumentsTest::picturesFromAPipeAreTakenAsTheyCome()
{
    CapturePlan plan = Plan(7);
    plan.screenPipe = 5;
    const Arguments result = tool::TranslateCapture(oneSound, plan);
    QVERIFY2(Has(result, {"-f", "rawvideo", "-pixel_format", "yuv420p", "-video_size", "1280x800",
                          "-framerate", "29.97", "-skip_initial_bytes", "64", "-i", "/dev/fd/5"}),
             qPrintable(Shown(result)));
    QVERIFY(Find(result, {"-i", "/dev/fd/7"}) > Find(result, {"-i", "/dev/fd/5"}));
    QVERIFY2(!Has(result, {"-vf"}) && !Has(result, {"x11grab"}), qPrintable(Shown(result)));
}

void ToolArgumentsTest::onlyPicturesOfTheUsualColoursMayBeConverted()
{
    QVERIFY(tool::WantsYuv420(silent));
    QVERIFY(!tool::WantsYuv420({"-f", "avfoundation", "-i", "0", "o.mp4"}));
    QVERIFY(!tool::WantsYuv420({"-f", "avfoundation", "-i", "0", "-pix_fmt", "yuv444p", "o.mp4"}));
    QCOMPARE(tool::FrameRate(silent), std::string("29.97"));
}

void ToolArgumentsTest::soundFollowsTheScreen()
{
    const Arguments result = tool::TranslateCapture(oneSound, Plan(7));
    const ptrdiff_t screen = Find(result, {"-f", "x11grab"});
    const ptrdiff_t sound =
        Find(result, {"-f", "s16le", "-ar", "44100", "-ac", "2", "-i", "/dev/fd/7"});
    QVERIFY2(screen >= 0 && sound > screen, qPrintable(Shown(result)));
}

void ToolArgumentsTest::secondInputAddsNoSecondScreen()
{
    const Arguments result = tool::TranslateCapture(twoSounds, Plan(7));
    QCOMPARE(std::count(result.begin(), result.end(), "-i"), 2);
    QCOMPARE(std::count(result.begin(), result.end(), "x11grab"), 1);
}

void ToolArgumentsTest::syncOptionBecomesAFilter()
{
    const Arguments result = tool::TranslateCapture(oneSound, Plan(7));
    QVERIFY2(Has(result, {"-af", "aresample=async=1"}), qPrintable(Shown(result)));
    QVERIFY(!Has(result, {"-async"}));
}

void ToolArgumentsTest::framesComeAtTheRateOfTheFile()
{
    const Arguments result = tool::TranslateCapture(silent, Plan(std::nullopt));
    QVERIFY2(Has(result, {"-framerate", "29.97"}), qPrintable(Shown(result)));
    const ptrdiff_t filter = Find(result, {"-vf"});
    QVERIFY(filter >= 0);
    QVERIFY(result[static_cast<size_t>(filter) + 1].ends_with(",fps=29.97"));

    const Arguments without = tool::TranslateCapture(
        {"-f", "avfoundation", "-framerate", "25", "-i", "0", "o.mp4"}, Plan(std::nullopt));
    QVERIFY2(Has(without, {"-framerate", "25"}), qPrintable(Shown(without)));
}

void ToolArgumentsTest::keyFramesAreUnderTwoSecondsApart()
{
    const Arguments result = tool::TranslateCapture(silent, Plan(std::nullopt));
    const ptrdiff_t at = Find(result, {"-g"});
    QVERIFY(at >= 0);
    QVERIFY(std::stoi(result[static_cast<size_t>(at) + 1]) / 29.97 < 2);
    Arguments own = silent;
    own.insert(own.end() - 1, {"-g", "10"});
    const Arguments kept = tool::TranslateCapture(own, Plan(std::nullopt));
    QCOMPARE(std::count(kept.begin(), kept.end(), "-g"), 1);
}

void ToolArgumentsTest::moviesAreRecordedInPieces_data()
{
    QTest::addColumn<std::string>("name");
    QTest::addColumn<Arguments>("options");
    QTest::addColumn<bool>("inPieces");
    QTest::newRow("movie") << std::string("o.mp4") << Arguments() << true;
    QTest::newRow("another kind") << std::string("o.mkv") << Arguments() << false;
    QTest::newRow("a name that is only an ending") << std::string(".mp4") << Arguments() << false;
    QTest::newRow("another kind under that name")
        << std::string("o.mp4") << Arguments{"-f", "mpegts"} << false;
    QTest::newRow("written as the caller wants it")
        << std::string("o.mp4") << Arguments{"-movflags", "+faststart"} << false;
}

void ToolArgumentsTest::moviesAreRecordedInPieces()
{
    QFETCH(std::string, name);
    QFETCH(Arguments, options);
    QFETCH(bool, inPieces);
    Arguments own = silent;
    own.back() = name;
    own.insert(own.end() - 1, options.begin(), options.end());
    QCOMPARE(tool::RecordsInPieces(own), inPieces);
    const Arguments result = tool::TranslateCapture(own, Plan(std::nullopt));
    const auto at = Find(result, {"-frag_duration", "500000"});
    QCOMPARE(at >= 0, inPieces);
    QVERIFY2(!inPieces || at > Find(result, {"-i"}), "not for the output");
}

void ToolArgumentsTest::whatIsRecordedReachesTheFileAtOnce()
{
    QVERIFY(Has(tool::TranslateCapture(silent, Plan(std::nullopt)), {"-flush_packets", "1"}));
    Arguments own = silent;
    own.insert(own.end() - 1, {"-flush_packets", "0"});
    QVERIFY(!Has(tool::TranslateCapture(own, Plan(std::nullopt)), {"-flush_packets", "1"}));
}

void ToolArgumentsTest::filtersOfTheCallerAreKept()
{
    Arguments own = oneSound;
    own.insert(own.end() - 1, {"-vf", "hflip", "-af", "volume=2"});
    const Arguments result = tool::TranslateCapture(own, Plan(5));
    const ptrdiff_t video = Find(result, {"-vf"});
    const ptrdiff_t sound = Find(result, {"-af"});
    QVERIFY(result[static_cast<size_t>(video) + 1].ends_with(",hflip"));
    QCOMPARE(result[static_cast<size_t>(sound) + 1], "aresample=async=1,volume=2");
    QCOMPARE(std::count(result.begin(), result.end(), "-vf"), 1);
}

void ToolArgumentsTest::statusPeriodOnlyWhereKnown()
{
    CapturePlan plan = Plan(std::nullopt);
    QVERIFY(Has(tool::TranslateCapture(silent, plan), {"-stats_period", "0.1"}));
    plan.knowsStatsPeriod = false;
    QVERIFY(!Has(tool::TranslateCapture(silent, plan), {"-stats_period"}));
}

void ToolArgumentsTest::oddSizesLoseOnePixel()
{
    QCOMPARE(tool::EvenSized({3, 5, 1367, 769}), (tool::Rectangle{3, 5, 1366, 768}));
    QCOMPARE(tool::EvenSized({0, 0, 1280, 800}), (tool::Rectangle{0, 0, 1280, 800}));
}

void ToolArgumentsTest::sampleRatesOutsideTheLimitsAreTheUsualOne_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("rate");
    for (const auto& [text, rate] : {std::pair<const char*, int>{"44100", 44100},
                                     {"8000", 8000},
                                     {"7999", 48000},
                                     {"192000", 192000},
                                     {"192001", 48000},
                                     {"x", 48000},
                                     {"-8000", 48000}}) {
        QTest::newRow(text) << QString(text) << rate;
    }
}

void ToolArgumentsTest::sampleRatesOutsideTheLimitsAreTheUsualOne()
{
    QFETCH(QString, text);
    QTEST(tool::SampleRate({"-i", "a", "-ar", text.toStdString(), "o.mp4"}), "rate");
    QCOMPARE(tool::SampleRate(oneSound), 44100);
    QCOMPARE(tool::SampleRate({"-i", "a", "o.mp4"}), 48000);
}

QTEST_APPLESS_MAIN(ToolArgumentsTest)
#include "tool_arguments_test.moc"
