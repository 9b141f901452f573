// What the recorder sees of a job: ffmpeg's output without words it would misunderstand, and ticks.
#include "tool/edit/output_filter.h"
#include "tool/edit/ticks.h"

#include <QTest>

#include <random>

using namespace std::chrono_literals;

class ToolJobOutputTest : public QObject
{
    Q_OBJECT

private slots:
    void wordsOfFailureAreHeldBack();
    void heldLinesHaveALimit();
    void framesAreNoTicks();
    void piecesOfAnySizeGiveTheSameText();
    void zeroBytesHideNothing();
    void timeIsRead_data();
    void timeIsRead();
    void ticksFollowTheWork_data();
    void ticksFollowTheWork();
    void ticksKeepTheirDistance();
};

static const std::string kOutput = "Input #0, from '/v/frame= Invalid data.mp4':\n"
                                   "  Duration: 00:00:04.00\n"
                                   "frame=   23 fps= 23 size=  92kB time=00:00:01.50 speed=1x\r"
                                   "[aac] Invalid data found when processing input\n"
                                   "a.mp4: No such file or directory\n"
                                   "frame=   99 fps= 23 size=  92kB time=00:00:03.96 speed=1x\n"
                                   "Conversion failed!";

void ToolJobOutputTest::wordsOfFailureAreHeldBack()
{
    tool::OutputFilter filter;
    const std::string shown = filter.Take(kOutput);
    QVERIFY2(!tool::TellsFailure(shown), shown.c_str());
    QVERIFY2(shown.find("Duration: 00:00:04.00\n") != std::string::npos, shown.c_str());
    const std::string rest = filter.TakeRest();
    QCOMPARE(rest, std::string("Conversion failed!"
                               "Input #0, from '/v/frame= Invalid data.mp4':\n"
                               "[aac] Invalid data found when processing input\n"
                               "a.mp4: No such file or directory\n"));
}

void ToolJobOutputTest::heldLinesHaveALimit()
{
    tool::OutputFilter filter;
    for (int i = 0; i < 100000; ++i) {
        QCOMPARE(filter.Take("Invalid data found when processing input\n"), std::string());
    }
    const size_t held = filter.TakeRest().size();
    QVERIFY2(held > 1000 && held < 20000, qPrintable(QString::number(held)));
}

void ToolJobOutputTest::framesAreNoTicks()
{
    tool::OutputFilter filter;
    const std::string shown = filter.Take("frame=   23 fps= 23 frame=24\nframe=frame=\n");
    QCOMPARE(shown, std::string("frame    23 fps= 23 frame 24\nframe frame \n"));
}

void ToolJobOutputTest::piecesOfAnySizeGiveTheSameText()
{
    tool::OutputFilter whole;
    const std::string expected = whole.Take(kOutput);
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same every time
    for (int round = 0; round < 100; ++round) {
        tool::OutputFilter filter;
        std::string shown;
        for (size_t at = 0; at < kOutput.size();) {
            const size_t size = random() % 30 + 1;
            shown += filter.Take(std::string_view(kOutput).substr(at, size));
            at += size;
        }
        QCOMPARE(shown, expected);
        QCOMPARE(filter.Seconds(), 3.96);
    }
}

// The recorder reads a chunk up to its first zero byte.
void ToolJobOutputTest::zeroBytesHideNothing()
{
    tool::OutputFilter filter;
    const std::string shown = filter.Take(std::string("a\0b Invalid\0 data\n\0c\n", 21));
    QCOMPARE(shown, std::string("c\n"));
    const std::string endless = filter.Take(std::string(100000, 'x'));
    QVERIFY2(endless.size() > 90000, "a line without an end is kept");
}

void ToolJobOutputTest::timeIsRead_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<double>("seconds");
    QTest::newRow("plain") << QByteArray("size= 1kB time=00:00:01.50 bitrate=") << 1.5;
    QTest::newRow("hours") << QByteArray("size= 1kB time=101:02:03.25 bitrate=") << 363723.25;
    QTest::newRow("none") << QByteArray("size= 1kB time=N/A bitrate=") << 0.0;
    QTest::newRow("negative") << QByteArray("size= 1kB time=-00:00:00.99 bitrate=") << 0.0;
    QTest::newRow("cut off") << QByteArray("size= 1kB time=00:00") << 0.0;
    QTest::newRow("no number") << QByteArray("size= 1kB time=00:nan:01.00") << 0.0;
    QTest::newRow("endless") << QByteArray("size= 1kB time=00:00:inf bitrate=") << 0.0;
    QTest::newRow("huge") << QByteArray(" time=" + QByteArray(400, '9') + ":00:00.00") << 0.0;
    QTest::newRow("backwards") << QByteArray("size= 1kB time=00:00:05.00\r time=00:00:02.00")
                               << 5.0;
}

void ToolJobOutputTest::timeIsRead()
{
    QFETCH(QByteArray, line);
    QFETCH(double, seconds);
    tool::OutputFilter filter;
    filter.Take(line.toStdString() + "\r");
    QCOMPARE(filter.Seconds(), seconds);
}

void ToolJobOutputTest::ticksFollowTheWork_data()
{
    QTest::addColumn<int>("most");
    QTest::addColumn<double>("seconds"); // of the job
    QTest::addColumn<int>("expected");
    QTest::newRow("trim") << 19 << 60.0 << 19;
    QTest::newRow("one file") << 38 << 60.0 << 38;
    QTest::newRow("two files, long") << 57 << 600.0 << 57;
    QTest::newRow("twenty files, long") << 399 << 600.0 << 399;
    QTest::newRow("twenty files, short") << 399 << 0.6 << 10;
    QTest::newRow("in no time") << 57 << 0.0 << 1;
    QTest::newRow("none") << 0 << 10.0 << 0;
}

// Looked at every 10 ms, they are never ahead of the work.
void ToolJobOutputTest::ticksFollowTheWork()
{
    QFETCH(int, most);
    QFETCH(double, seconds);
    QFETCH(int, expected);
    tool::Ticks ticks(most);
    const tool::SteadyTime start{1h};
    const auto length = std::chrono::duration<double>(seconds);
    for (std::chrono::milliseconds passed{}; passed <= length; passed += 10ms) {
        const double share = seconds > 0 ? passed / length : 1;
        ticks.IsDue(share, start + passed);
        QVERIFY2(ticks.Made() <= share * most, qPrintable(QString::number(share)));
    }
    QVERIFY2(std::abs(ticks.Made() - expected) <= 1 && ticks.Made() <= most,
             qPrintable(QString::number(ticks.Made())));
}

void ToolJobOutputTest::ticksKeepTheirDistance()
{
    tool::Ticks ticks(19);
    const tool::SteadyTime start{1h};
    QVERIFY(ticks.IsDue(1, start));
    QVERIFY(!ticks.IsDue(1, start + 59ms));
    QVERIFY(ticks.IsDue(1, start + 60ms));
    QVERIFY(!ticks.IsDue(0.1, start + 1s));
}

QTEST_APPLESS_MAIN(ToolJobOutputTest)
#include "tool_job_output_test.moc"
