#include "tests/support/capture_arguments.h"
#include "tool/command/command.h"

#include <QTest>

using tool::Arguments;
using tool::Record;

namespace {

template <typename Kind>
bool Is(const Arguments& arguments)
{
    return std::holds_alternative<Kind>(tool::ReadCommand(arguments));
}

// The recording these arguments ask for.
Record Asked(const Arguments& arguments)
{
    return std::get<Record>(tool::ReadCommand(arguments));
}

Arguments Split(const QString& line)
{
    Arguments arguments;
    for (const QString& word : line.split(' ')) {
        arguments.push_back(word.toStdString());
    }
    return arguments;
}

} // namespace

class ToolCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void listingIsRecognised();
    void probeIsRecognised();
    void eachSoundChoiceNamesItsDevices();
    void malformedNamesAreRefused_data();
    void malformedNamesAreRefused();
    void rateAndColoursAreThoseOfTheOutput();
    void sampleRatesOutsideTheLimitsAreTheUsualOne_data();
    void sampleRatesOutsideTheLimitsAreTheUsualOne();
    void recordingWithoutOutputHasNoFile();
    void cutIsRecognised();
    void conversionIsRecognised();
    void joinIsRecognised();
    void similarCommandsArePassedOn_data();
    void similarCommandsArePassedOn();
    void otherCommandsArePassedOnByteForByte();
    void removedOptionsAreRenamed();
};

void ToolCommandTest::listingIsRecognised()
{
    QVERIFY(Is<tool::List>({"-f", "avfoundation", "-list_devices", "true", "-i", " "}));
    QVERIFY(Is<tool::PassOn>({"-list_devices", "true", "-i", " "}));
    QVERIFY(Is<tool::PassOn>({}));
}

void ToolCommandTest::probeIsRecognised()
{
    const tool::Command command = tool::ReadCommand({"-i", "/v/a b.mp4"});
    QVERIFY(std::holds_alternative<tool::Probe>(command));
    QCOMPARE(std::get<tool::Probe>(command).file, std::string("/v/a b.mp4"));
}

void ToolCommandTest::eachSoundChoiceNamesItsDevices()
{
    QVERIFY(Asked(silent).sounds.empty());
    QCOMPARE(Asked(oneSound).sounds, std::vector<int>({2}));
    const Record both = Asked(twoSounds);
    QCOMPARE(both.screen, 1);
    QCOMPARE(both.sounds, std::vector<int>({0, 3}));
    // The same device twice would be mixed with itself.
    const Record same =
        Asked(Recording({"-f", "avfoundation", "-i", "1:3", "-f", "avfoundation", "-i", "1:3"}));
    QCOMPARE(same.sounds, std::vector<int>({3}));
    QVERIFY(Asked(Recording({"-f", "avfoundation", "-i", "1:none"})).sounds.empty());
}

void ToolCommandTest::malformedNamesAreRefused_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"", ":", "0:", ":1", "a", "0:x", "-1", "0:-2", "0 ", "0:1:2", " 0",
                             "99999999999", "0:99999999999"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void ToolCommandTest::malformedNamesAreRefused()
{
    QFETCH(QString, name);
    const tool::Command command =
        tool::ReadCommand(Recording({"-f", "avfoundation", "-i", name.toStdString()}));
    QVERIFY(std::holds_alternative<tool::Malformed>(command));
    const std::string error = std::get<tool::Malformed>(command).error;
    const std::string quoted = QStringLiteral("\"%1\"").arg(name).toStdString();
    QVERIFY2(error.find(quoted) != std::string::npos, error.c_str());
}

void ToolCommandTest::rateAndColoursAreThoseOfTheOutput()
{
    QCOMPARE(Asked(silent).rate, std::string("29.97"));
    QVERIFY(Asked(silent).isYuv420);
    const Record plain = Asked({"-f", "avfoundation", "-framerate", "25", "-i", "0", "o.mp4"});
    QCOMPARE(plain.rate, std::string("25"));
    QVERIFY(!plain.isYuv420);
    QVERIFY(!Asked({"-f", "avfoundation", "-i", "0", "-pix_fmt", "yuv444p", "o.mp4"}).isYuv420);
    QCOMPARE(Asked({"-f", "avfoundation", "-i", "0", "o.mp4"}).rate, std::string("30"));
}

void ToolCommandTest::sampleRatesOutsideTheLimitsAreTheUsualOne_data()
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

void ToolCommandTest::sampleRatesOutsideTheLimitsAreTheUsualOne()
{
    QFETCH(QString, text);
    const Arguments capture = {"-f", "avfoundation", "-i", "0"};
    Arguments arguments = capture;
    arguments.insert(arguments.end(), {"-ar", text.toStdString(), "o.mp4"});
    QTEST(Asked(arguments).sampleRate, "rate");
    QCOMPARE(Asked(oneSound).sampleRate, 44100);
    arguments = capture;
    arguments.push_back("o.mp4");
    QCOMPARE(Asked(arguments).sampleRate, 48000);
}

void ToolCommandTest::recordingWithoutOutputHasNoFile()
{
    const Record record = Asked({"-f", "avfoundation", "-i", "0"});
    QVERIFY(record.file.empty() && record.output.empty() && !record.fragmented);
}

void ToolCommandTest::cutIsRecognised()
{
    const tool::Command command = tool::ReadCommand(
        {"-i", "/v/a b.mp4", "-ss", "10", "-t", "15", "-codec", "copy", "/out/Cut_a b.mp4"});
    QVERIFY(std::holds_alternative<tool::Cut>(command));
    const auto cut = std::get<tool::Cut>(command);
    QCOMPARE(cut.source, std::string("/v/a b.mp4"));
    QCOMPARE(cut.start, 10);
    QCOMPARE(cut.length, 15);
    QCOMPARE(cut.destination, std::string("/out/Cut_a b.mp4"));
}

void ToolCommandTest::conversionIsRecognised()
{
    const tool::Command command =
        tool::ReadCommand(Split("-i a -vcodec copy -acodec copy -vbsf h264_mp4toannexb /d/1.ts"));
    QVERIFY(std::holds_alternative<tool::Convert>(command));
    QCOMPARE(std::get<tool::Convert>(command).source, std::string("a"));
    QCOMPARE(std::get<tool::Convert>(command).destination, std::string("/d/1.ts"));
}

void ToolCommandTest::joinIsRecognised()
{
    const tool::Command command = tool::ReadCommand(
        Split("-i concat:/d/1.ts|/d/2.ts| -acodec copy -vcodec copy -absf aac_adtstoasc o"));
    QVERIFY(std::holds_alternative<tool::Join>(command));
    QCOMPARE(std::get<tool::Join>(command).list, std::string("/d/1.ts|/d/2.ts|"));
    QCOMPARE(std::get<tool::Join>(command).destination, std::string("o"));
}

void ToolCommandTest::similarCommandsArePassedOn_data()
{
    QTest::addColumn<QString>("line");
    for (const char* line :
         {"-i a -vcodec copy -acodec copy -vbsf h264_mp4toannexb",
          "-i a -vcodec copy -acodec copy -vbsf dump_extra b",
          "-i a -vcodec copy -acodec copy -vbsf h264_mp4toannexb -y b",
          "-i concat:a|b| -acodec copy -vcodec copy -absf aac_adtstoasc",
          "-i a.ts -acodec copy -vcodec copy -absf aac_adtstoasc b",
          "-i concat:a| -acodec aac -vcodec copy -absf aac_adtstoasc b",
          "-i a -ss 7 -t 3 -codec copy -y b", "-ss 7 -i a -t 3 -codec copy b",
          "-i a -ss 3.5 -t 2 -codec copy b", "-i a -ss 99999999999999999999 -t 2 -codec copy b",
          "-y -i", "-i a -y"}) {
        QTest::newRow(line) << QString(line);
    }
}

void ToolCommandTest::similarCommandsArePassedOn()
{
    QFETCH(QString, line);
    QVERIFY(Is<tool::PassOn>(Split(line)));
}

void ToolCommandTest::otherCommandsArePassedOnByteForByte()
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
    QCOMPARE(std::get<tool::PassOn>(tool::ReadCommand(strange)).arguments, strange);
}

void ToolCommandTest::removedOptionsAreRenamed()
{
    const auto passedOn = [](const QString& line) {
        return std::get<tool::PassOn>(tool::ReadCommand(Split(line))).arguments;
    };
    QCOMPARE(passedOn("-i a.mp4 -vcodec copy -vbsf h264_mp4toannexb -absf aac_adtstoasc 1.ts"),
             Split("-i a.mp4 -vcodec copy -bsf:v h264_mp4toannexb -bsf:a aac_adtstoasc 1.ts"));
    QCOMPARE(passedOn("-i -vbsf o.mp4"), Split("-i -vbsf o.mp4")); // the name of an input
}

QTEST_APPLESS_MAIN(ToolCommandTest)
#include "tool_command_test.moc"
