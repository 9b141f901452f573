#include "tests/support/capture_arguments.h"
#include "tool/feed/fed_inputs.h"
#include "tool/record/capture_command.h"

#include <QTest>

#include <algorithm>

using tool::Arguments;
using tool::FeedPlan;

namespace {

FeedPlan Plan(std::optional<int> soundPipe)
{
    return {":4", {100, 20, 1280, 800}, soundPipe};
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

Arguments Translate(const Arguments& arguments, const FeedPlan& plan, bool knowsStatsPeriod = true)
{
    const auto record = std::get<tool::Record>(tool::ReadCommand(arguments));
    return tool::CaptureCommand(record, {tool::FedInputs(record, plan), {knowsStatsPeriod}});
}

} // namespace

class ToolCaptureCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void silentRecordingOpensTheScreenOnly();
    void picturesFromAPipeAreTakenAsTheyCome();
    void soundFollowsTheScreen();
    void secondInputAddsNoSecondScreen();
    void syncOptionBecomesAFilter();
    void framesComeAtTheRateOfTheFile();
    void keyFramesAreUnderTwoSecondsApart();
    void moviesAreFragmentedWhileRecorded_data();
    void moviesAreFragmentedWhileRecorded();
    void whatIsRecordedReachesTheFileAtOnce();
    void filtersOfTheCallerAreKept();
    void statusPeriodOnlyWhereKnown();
    void oddSizesLoseOnePixel();
};

void ToolCaptureCommandTest::silentRecordingOpensTheScreenOnly()
{
    const Arguments result = Translate(silent, Plan(std::nullopt));
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

void ToolCaptureCommandTest::picturesFromAPipeAreTakenAsTheyCome()
{
    FeedPlan plan = Plan(7);
    plan.screenPipe = 5;
    const Arguments result = Translate(oneSound, plan);
    QVERIFY2(Has(result, {"-f", "rawvideo", "-pixel_format", "yuv420p", "-video_size", "1280x800",
                          "-framerate", "29.97", "-skip_initial_bytes", "64", "-i", "/dev/fd/5"}),
             qPrintable(Shown(result)));
    QVERIFY(Find(result, {"-i", "/dev/fd/7"}) > Find(result, {"-i", "/dev/fd/5"}));
    QVERIFY2(!Has(result, {"-vf"}) && !Has(result, {"x11grab"}), qPrintable(Shown(result)));
}

void ToolCaptureCommandTest::soundFollowsTheScreen()
{
    const Arguments result = Translate(oneSound, Plan(7));
    const ptrdiff_t screen = Find(result, {"-f", "x11grab"});
    const ptrdiff_t sound =
        Find(result, {"-f", "s16le", "-ar", "44100", "-ac", "2", "-i", "/dev/fd/7"});
    QVERIFY2(screen >= 0 && sound > screen, qPrintable(Shown(result)));
}

void ToolCaptureCommandTest::secondInputAddsNoSecondScreen()
{
    const Arguments result = Translate(twoSounds, Plan(7));
    QCOMPARE(std::count(result.begin(), result.end(), "-i"), 2);
    QCOMPARE(std::count(result.begin(), result.end(), "x11grab"), 1);
}

void ToolCaptureCommandTest::syncOptionBecomesAFilter()
{
    const Arguments result = Translate(oneSound, Plan(7));
    QVERIFY2(Has(result, {"-af", "aresample=async=1"}), qPrintable(Shown(result)));
    QVERIFY(!Has(result, {"-async"}));
}

void ToolCaptureCommandTest::framesComeAtTheRateOfTheFile()
{
    const Arguments result = Translate(silent, Plan(std::nullopt));
    QVERIFY2(Has(result, {"-framerate", "29.97"}), qPrintable(Shown(result)));
    const ptrdiff_t filter = Find(result, {"-vf"});
    QVERIFY(filter >= 0);
    QVERIFY(result[static_cast<size_t>(filter) + 1].ends_with(",fps=29.97"));

    const Arguments without = Translate(
        {"-f", "avfoundation", "-framerate", "25", "-i", "0", "o.mp4"}, Plan(std::nullopt));
    QVERIFY2(Has(without, {"-framerate", "25"}), qPrintable(Shown(without)));
}

void ToolCaptureCommandTest::keyFramesAreUnderTwoSecondsApart()
{
    const Arguments result = Translate(silent, Plan(std::nullopt));
    const ptrdiff_t at = Find(result, {"-g"});
    QVERIFY(at >= 0);
    QVERIFY(std::stoi(result[static_cast<size_t>(at) + 1]) / 29.97 < 2);
    Arguments own = silent;
    own.insert(own.end() - 1, {"-g", "10"});
    const Arguments kept = Translate(own, Plan(std::nullopt));
    QCOMPARE(std::count(kept.begin(), kept.end(), "-g"), 1);
}

void ToolCaptureCommandTest::moviesAreFragmentedWhileRecorded_data()
{
    QTest::addColumn<std::string>("name");
    QTest::addColumn<Arguments>("options");
    QTest::addColumn<bool>("fragmented");
    QTest::newRow("movie") << std::string("o.mp4") << Arguments() << true;
    QTest::newRow("another kind") << std::string("o.mkv") << Arguments() << false;
    QTest::newRow("a name that is only an ending") << std::string(".mp4") << Arguments() << false;
    QTest::newRow("another kind under that name")
        << std::string("o.mp4") << Arguments{"-f", "mpegts"} << false;
    QTest::newRow("written as the caller wants it")
        << std::string("o.mp4") << Arguments{"-movflags", "+faststart"} << false;
}

void ToolCaptureCommandTest::moviesAreFragmentedWhileRecorded()
{
    QFETCH(std::string, name);
    QFETCH(Arguments, options);
    QFETCH(bool, fragmented);
    Arguments own = silent;
    own.back() = name;
    own.insert(own.end() - 1, options.begin(), options.end());
    QCOMPARE(std::get<tool::Record>(tool::ReadCommand(own)).fragmented, fragmented);
    const Arguments result = Translate(own, Plan(std::nullopt));
    const auto at = Find(result, {"-frag_duration", "500000"});
    QCOMPARE(at >= 0, fragmented);
    QVERIFY2(!fragmented || at > Find(result, {"-i"}), "not for the output");
}

void ToolCaptureCommandTest::whatIsRecordedReachesTheFileAtOnce()
{
    QVERIFY(Has(Translate(silent, Plan(std::nullopt)), {"-flush_packets", "1"}));
    Arguments own = silent;
    own.insert(own.end() - 1, {"-flush_packets", "0"});
    QVERIFY(!Has(Translate(own, Plan(std::nullopt)), {"-flush_packets", "1"}));
}

void ToolCaptureCommandTest::filtersOfTheCallerAreKept()
{
    Arguments own = oneSound;
    own.insert(own.end() - 1, {"-vf", "hflip", "-af", "volume=2"});
    const Arguments result = Translate(own, Plan(5));
    const ptrdiff_t video = Find(result, {"-vf"});
    const ptrdiff_t sound = Find(result, {"-af"});
    QVERIFY(result[static_cast<size_t>(video) + 1].ends_with(",hflip"));
    QCOMPARE(result[static_cast<size_t>(sound) + 1], "aresample=async=1,volume=2");
    QCOMPARE(std::count(result.begin(), result.end(), "-vf"), 1);
}

void ToolCaptureCommandTest::statusPeriodOnlyWhereKnown()
{
    QVERIFY(Has(Translate(silent, Plan(std::nullopt)), {"-stats_period", "0.1"}));
    QVERIFY(!Has(Translate(silent, Plan(std::nullopt), false), {"-stats_period"}));
}

void ToolCaptureCommandTest::oddSizesLoseOnePixel()
{
    QCOMPARE(tool::EvenSized({3, 5, 1367, 769}), (tool::Rectangle{3, 5, 1366, 768}));
    QCOMPARE(tool::EvenSized({0, 0, 1280, 800}), (tool::Rectangle{0, 0, 1280, 800}));
}

QTEST_APPLESS_MAIN(ToolCaptureCommandTest)
#include "tool_capture_command_test.moc"
