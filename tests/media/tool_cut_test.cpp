// Cuts requested like the recorder does, made by `tool` with the real ffmpeg and checked as a
// player shows them.
#include "tests/support/movie_test.h"
#include "tool/edit/cut.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// Options that make ffmpeg show this many seconds from there on.
static QStringList Span(int start, int length)
{
    return {"-ss", QString::number(start), "-t", QString::number(length)};
}

class ToolCutTest : public MovieTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cutSeeksInItsSource();
    void cutShowsAPictureAtOnceAndIsAsLongAsAsked_data();
    void cutShowsAPictureAtOnceAndIsAsLongAsAsked();
    void soundAndPictureAreInStep_data();
    void soundAndPictureAreInStep();
    void cutOfACutIsExact();
    void cutFromTheVeryEndIsNotSought_data();
    void cutFromTheVeryEndIsNotSought();
    void cutWithoutContentFailsAndLeavesNothing_data();
    void cutWithoutContentFailsAndLeavesNothing();
    void nothingIsEncodedAgain();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    // Cuts with the recorder's command line and returns the path of the result.
    QString Cut(const QString& source, int start, int length);

    int m_cuts = 0;
};

QString ToolCutTest::Cut(const QString& source, int start, int length)
{
    QString result = Path(QString("Cut_%1.mp4").arg(++m_cuts));
    const Outcome outcome =
        RunProgram(TOOL_PROGRAM, {"-i", Path(source), "-ss", QString::number(start), "-t",
                                  QString::number(length), "-codec", "copy", result});
    if (outcome.code != 0) {
        qWarning("%s", qPrintable(QString::fromUtf8(outcome.error)));
    }
    return result;
}

void ToolCutTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    const auto flash = [](const QString& rate) { return FlashInput(12, "160x120", rate); };
    const QStringList both = flash("25") + BeepInput(12);
    const QStringList rare = {"-g", "125", "-keyint_min", "125", "-sc_threshold", "0"};
    const QStringList plain = PlainCodecs() + rare;
    const QStringList moving = PictureInput(12) + ToneInput(12) + plain;
    Make("plain.mp4", both + plain);
    Make("b frames.mp4", both + plain + QStringList{"-bf", "3"});
    Make("ntsc.mp4", flash("30000/1001") + BeepInput(12, 44100) + plain + QStringList{"-bf", "2"});
    Make("surround.mp4", both + plain + QStringList{"-ac", "6"});
    Make("h265.mp4", both + QStringList{"-c:v", "libx265", "-preset", "ultrafast", "-x265-params",
                                        "log-level=none:keyint=125:min-keyint=125", "-c:a", "aac"});
    Make("fragmented.mp4", both + plain + QStringList{"-movflags", "frag_keyframe+empty_moov"});
    // The header has the length of the first fragment only.
    Make("header of 5 s.mp4", PictureInput(12) + plain + QStringList{"-movflags", "frag_keyframe"});
    Make("moving.mp4", moving + QStringList{"-bf", "3"});
    Make("mute.mp4", PictureInput(12) + plain + QStringList{"-bf", "3"});
    Make("uneven.mp4",
         moving + QStringList{"-vf", "select='gt(random(0),0.4)'", "-fps_mode", "vfr", "-bf", "2"});
    Make("turned.mp4", QStringList{"-i", Path("mute.mp4")} +
                           QStringList{"-c", "copy", "-metadata:s:v", "rotate=90"});
    QVERIFY(QFile::copy(Path("plain.mp4"), Path("\"a\" %1\n|\u4e2d.mp4")));
}

void ToolCutTest::cutSeeksInItsSource()
{
    QVERIFY(tool::CutArguments({"a", 7, 3, "b"}, true) ==
            tool::Arguments({"-ss", "7", "-i", "a", "-t", "3", "-codec", "copy"}));
}

void ToolCutTest::cutShowsAPictureAtOnceAndIsAsLongAsAsked_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("start");
    for (const QString name : {"moving.mp4", "mute.mp4", "uneven.mp4", "turned.mp4"}) {
        for (const int start : {0, 1, 4, 7}) {
            QTest::newRow(qPrintable(QString("%1 from %2").arg(name).arg(start))) << name << start;
        }
    }
    QTest::newRow("header of 5 s.mp4 from 7") << QString("header of 5 s.mp4") << 7;
}

// From the first frame on, every frame shown is the one the source shows at that time.
void ToolCutTest::cutShowsAPictureAtOnceAndIsAsLongAsAsked()
{
    QFETCH(QString, name);
    QFETCH(int, start);
    constexpr int length = 3;
    const QString result = Cut(name, start, length);
    QCOMPARE(PictureDigests(result, Span(0, length)),
             PictureDigests(Path(name), Span(start, length)));
    QCOMPARE(DecodingErrors(result), QByteArray());
    const Outcome probe = RunProgram(TOOL_PROGRAM, {"-i", result});
    const double seconds = DurationIn(probe.error);
    QVERIFY2(seconds > length - 0.1 && seconds < length + 0.5, probe.error);
}

void ToolCutTest::soundAndPictureAreInStep_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"plain.mp4", "b frames.mp4", "ntsc.mp4", "surround.mp4", "h265.mp4",
                             "fragmented.mp4", "\"a\" %1\n|\u4e2d.mp4"}) {
        QTest::newRow(name) << QString::fromUtf8(name);
    }
}

void ToolCutTest::soundAndPictureAreInStep()
{
    QFETCH(QString, name);
    const QString result = Cut(name, 3, 6);
    const QList<double> flashes = FlashTimes(result);
    const QList<double> beeps = BeepTimes(result);
    QVERIFY2(flashes.size() >= 6, qPrintable(QString::number(flashes.size())));
    QVERIFY2(beeps.size() >= 6, qPrintable(QString::number(beeps.size())));
    for (int second = 0; second < 6; ++second) {
        const double off = flashes[second] - beeps[second];
        const QByteArray place = QByteArray::number(second) + " s: flash " +
                                 QByteArray::number(flashes[second]) + ", beep " +
                                 QByteArray::number(beeps[second]);
        QVERIFY2(std::abs(off) < 0.05, place);
        QVERIFY2(std::abs(flashes[second] - second) < 0.05, place);
    }
    QCOMPARE(DecodingErrors(result), QByteArray());
}

void ToolCutTest::cutOfACutIsExact()
{
    const QString first = Cut("moving.mp4", 2, 8);
    QVERIFY(QFile::copy(first, Path("first.mp4")));
    const QString fromStart = Cut("first.mp4", 0, 2);
    QCOMPARE(PictureDigests(fromStart, Span(0, 2)), PictureDigests(Path("moving.mp4"), Span(2, 2)));
    const QString later = Cut("first.mp4", 5, 2);
    QCOMPARE(PictureDigests(later, Span(0, 2)), PictureDigests(Path("moving.mp4"), Span(7, 2)));
}

void ToolCutTest::cutFromTheVeryEndIsNotSought_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("start");
    QTest::addColumn<bool>("left");
    QTest::newRow("a second before the end") << 4.0 << "3" << false;
    QTest::newRow("at the end") << 4.0 << "4" << true;
    QTest::newRow("in the last picture") << 4.04 << "4" << false;
    QTest::newRow("in the second that it does not reach") << 4.04 << "5" << true;
}

// Sought there, it would give the last pictures. A stand-in for ffmpeg tells what it was given.
void ToolCutTest::cutFromTheVeryEndIsNotSought()
{
    QFETCH(double, seconds);
    QFETCH(QString, start);
    QFETCH(bool, left);
    Make("exact.mp4", PictureInput(seconds) + PlainCodecs());
    QVERIFY(WriteProgram(Path("stand-in"), "#!/bin/sh\nprintf '%s\\n' \"$@\"\n"));
    const QString source = Path("exact.mp4");
    qputenv("LUMENFOLD_FFMPEG", QFile::encodeName(Path("stand-in")));
    const Outcome outcome = RunProgram(
        TOOL_PROGRAM, {"-i", source, "-ss", start, "-t", "2", "-codec", "copy", Path("out.mp4")});
    qunsetenv("LUMENFOLD_FFMPEG");
    const QString asked = QStringList{"-i", source, "-ss", start}.join('\n');
    const QString sought = QStringList{"-ss", start, "-i", source}.join('\n');
    QVERIFY2(outcome.error.contains((left ? asked : sought).toUtf8()), outcome.error);
}

void ToolCutTest::cutWithoutContentFailsAndLeavesNothing_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::newRow("no length") << 3 << 0;
    QTest::newRow("end before start") << 3 << -2;
    QTest::newRow("from the end") << 12 << 5;
    QTest::newRow("from behind the end") << 500 << 5;
}

void ToolCutTest::cutWithoutContentFailsAndLeavesNothing()
{
    QFETCH(int, start);
    QFETCH(int, length);
    const QTemporaryDir folder;
    const Outcome outcome = RunProgram(
        TOOL_PROGRAM, {"-i", Path("plain.mp4"), "-ss", QString::number(start), "-t",
                       QString::number(length), "-codec", "copy", folder.filePath("cut.mp4")});
    QVERIFY2(outcome.code > 0, outcome.error);
    QVERIFY2(outcome.error.contains("No such file"), outcome.error);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void ToolCutTest::nothingIsEncodedAgain()
{
    const Outcome outcome = RunProgram(TOOL_PROGRAM, {"-i", Path("plain.mp4"), "-ss", "3", "-t",
                                                      "2", "-codec", "copy", Path("copied.mp4")});
    QCOMPARE(outcome.code, 0);
    QCOMPARE(outcome.error.count("(copy)"), 2);
    QVERIFY2(outcome.error.contains("frame="), outcome.error);
    QVERIFY2(PictureDigests(Path("copied.mp4")).size() >= 50, "there are pictures missing");
}

QTEST_GUILESS_MAIN(ToolCutTest)
#include "tool_cut_test.moc"
