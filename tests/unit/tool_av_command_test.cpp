// The recorder's commands on a Mac, as ffmpeg gets them there.
#include "tests/support/capture_arguments.h"
#include "tool/avfoundation/av_inputs.h"
#include "tool/command/sections.h"
#include "tool/record/capture_command.h"

#include <QTest>

#include <algorithm>
#include <set>

using tool::Arguments;

namespace {

constexpr tool::FfmpegFeatures newest = {true, true, true, true};

Arguments Translate(const Arguments& arguments, const std::vector<size_t>& sounds,
                    const tool::FfmpegFeatures& features = newest)
{
    const auto record = std::get<tool::Record>(tool::ReadCommand(arguments));
    return tool::CaptureCommand(
        record, {tool::AvInputs(record, {4, sounds, features.inputSync}), features, "/dev/fd/5"});
}

// The names of the inputs.
std::vector<std::string> Inputs(const Arguments& arguments)
{
    std::vector<std::string> names;
    for (const tool::Section& section : tool::SplitSections(arguments)) {
        if (section.input) {
            names.push_back(*section.input);
        }
    }
    return names;
}

QByteArray Shown(const Arguments& arguments)
{
    QByteArray text;
    for (const std::string& argument : arguments) {
        text += argument.c_str() + QByteArray(" ");
    }
    return text;
}

QString Value(const Arguments& arguments, const char* option)
{
    return QString::fromStdString(tool::ValueOf(arguments, option).value_or("none"));
}

} // namespace

class ToolAvCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void screenIsOpenedOnceWithItsPointer_data();
    void screenIsOpenedOnceWithItsPointer();
    void twoSoundsBecomeOneTrack();
    void oneSoundFollowsItsClock();
    void withoutSoundNothingIsMixed();
    void oddSizesLoseOnePixel();
    void inputsOfTheCallerShiftTheNumbers();
    void filtersOfTheCallerAreKept();
    void olderFfmpegsGetNothingTheyDoNotKnow();
    void everyOptionIsKnownToAllFfmpegs_data();
    void everyOptionIsKnownToAllFfmpegs();
};

void ToolAvCommandTest::screenIsOpenedOnceWithItsPointer_data()
{
    using Names = std::vector<std::string>;
    QTest::addColumn<Arguments>("command");
    QTest::addColumn<std::vector<size_t>>("sounds");
    QTest::addColumn<Names>("inputs");
    QTest::newRow("no sound") << silent << std::vector<size_t>() << Names{"4"};
    QTest::newRow("one sound") << oneSound << std::vector<size_t>{2} << Names{"4:2"};
    QTest::newRow("two sounds") << twoSounds << std::vector<size_t>{3, 0} << Names{"4:3", ":0"};
}

void ToolAvCommandTest::screenIsOpenedOnceWithItsPointer()
{
    using Names = std::vector<std::string>;
    QFETCH(Arguments, command);
    QFETCH(std::vector<size_t>, sounds);
    QFETCH(Names, inputs);
    const Arguments result = Translate(command, sounds);
    QVERIFY2(Inputs(result) == inputs, Shown(result));
    QCOMPARE(std::count(result.begin(), result.end(), "-capture_cursor"), 1);
    QCOMPARE(Value(result, "-capture_cursor"), QString("1"));
    QCOMPARE(Value(result, "-framerate"), QString("30"));
    QCOMPARE(result.back(), std::string("/dev/fd/5"));
}

void ToolAvCommandTest::twoSoundsBecomeOneTrack()
{
    const Arguments result = Translate(twoSounds, {3, 0});
    const QString graph = Value(result, "-filter_complex");
    QCOMPARE(graph, QString("[0:a]aresample=async=1000:first_pts=0:flags=res[s0];"
                            "[1:a]aresample=async=1000:first_pts=0:flags=res[s1];"
                            "[s0][s1]amix=inputs=2:normalize=0,alimiter[sound]"));
    QCOMPARE(Value(result, "-map"), QString("0:v"));
    QCOMPARE(std::count(result.begin(), result.end(), "-map"), 2);
    QCOMPARE(Value(result, "-isync"), QString("0"));
    QCOMPARE(Value(result, "-af"), QString("none"));
}

void ToolAvCommandTest::oneSoundFollowsItsClock()
{
    const Arguments result = Translate(oneSound, {2});
    QCOMPARE(Value(result, "-af"), QString("aresample=async=1000:first_pts=0:flags=res"));
    QCOMPARE(Value(result, "-filter_complex"), QString("none"));
}

void ToolAvCommandTest::withoutSoundNothingIsMixed()
{
    const Arguments result = Translate(silent, {});
    for (const char* option : {"-af", "-filter_complex", "-map", "-isync"}) {
        QCOMPARE(Value(result, option), QString("none"));
    }
}

void ToolAvCommandTest::oddSizesLoseOnePixel()
{
    const QString filter = Value(Translate(silent, {}), "-vf");
    QVERIFY2(filter.startsWith("crop=trunc(iw/2)*2:trunc(ih/2)*2:0:0,setpts="), qPrintable(filter));
    QVERIFY2(filter.endsWith(",fps=29.97"), qPrintable(filter));
}

void ToolAvCommandTest::inputsOfTheCallerShiftTheNumbers()
{
    Arguments own = {"-i", "/v/logo.png"};
    tool::Append(own, twoSounds);
    const Arguments result = Translate(own, {3, 0});
    QVERIFY2(Value(result, "-filter_complex").startsWith("[1:a]"), Shown(result));
    QCOMPARE(Value(result, "-map"), QString("1:v"));
    QCOMPARE(Value(result, "-isync"), QString("1"));
}

void ToolAvCommandTest::filtersOfTheCallerAreKept()
{
    Arguments own = twoSounds;
    own.insert(own.end() - 1, {"-vf", "hflip", "-af", "volume=2"});
    const Arguments both = Translate(own, {3, 0});
    QVERIFY2(Value(both, "-vf").endsWith(",hflip"), Shown(both));
    QVERIFY2(Value(both, "-filter_complex").endsWith("alimiter,volume=2[sound]"), Shown(both));
    QCOMPARE(Value(both, "-af"), QString("none"));
}

void ToolAvCommandTest::olderFfmpegsGetNothingTheyDoNotKnow()
{
    const Arguments result = Translate(twoSounds, {3, 0}, {});
    for (const char* option : {"-isync", "-stats_period"}) {
        QCOMPARE(Value(result, option), QString("none"));
    }
    QVERIFY2(
        Value(result, "-filter_complex").contains("amix=inputs=2:dropout_transition=0,volume=2,"),
        Shown(result));
}

void ToolAvCommandTest::everyOptionIsKnownToAllFfmpegs_data()
{
    QTest::addColumn<Arguments>("command");
    QTest::addColumn<std::vector<size_t>>("sounds");
    QTest::newRow("no sound") << silent << std::vector<size_t>();
    QTest::newRow("one sound") << oneSound << std::vector<size_t>{2};
    QTest::newRow("two sounds") << twoSounds << std::vector<size_t>{3, 0};
}

// Those that 5.1, 7.1 and 9.0 have in common.
void ToolAvCommandTest::everyOptionIsKnownToAllFfmpegs()
{
    QFETCH(Arguments, command);
    QFETCH(std::vector<size_t>, sounds);
    const std::set<std::string> known = {"-stats_period",
                                         "-thread_queue_size",
                                         "-f",
                                         "-capture_cursor",
                                         "-framerate",
                                         "-pixel_format",
                                         "-i",
                                         "-isync",
                                         "-ar",
                                         "-r",
                                         "-preset",
                                         "-max_muxing_queue_size",
                                         "-pix_fmt",
                                         "-filter_complex",
                                         "-map",
                                         "-af",
                                         "-vf",
                                         "-g",
                                         "-movflags",
                                         "-flush_packets",
                                         "-frag_duration",
                                         "-force_key_frames",
                                         "-y"};
    for (const std::string& word : Translate(command, sounds)) {
        QVERIFY2(!word.starts_with('-') || known.contains(word), word.c_str());
    }
}

QTEST_APPLESS_MAIN(ToolAvCommandTest)
#include "tool_av_command_test.moc"
