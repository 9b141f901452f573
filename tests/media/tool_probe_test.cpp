// The duration `tool` reads from a file's headers, compared with what ffmpeg says.
#include "tests/support/movie_test.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"

#include <QFile>

class ToolProbeTest : public MovieTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void answerIsFfmpegsToTheLetter_data();
    void answerIsFfmpegsToTheLetter();
    void aDurationOfNothingIsNone();
    void answerNeedsNoFfmpeg();
    void doubtfulFilesAreLeftToFfmpeg_data();
    void doubtfulFilesAreLeftToFfmpeg();
};

void ToolProbeTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    const QStringList both = PictureInput(1.5) + ToneInput(1.5);
    const QStringList plain = PlainCodecs();
    const QStringList copy = {"-c", "copy"};
    Make("plain.mp4", both + plain);
    Make("header first.mp4", both + plain + QStringList{"-movflags", "+faststart"});
    Make("mute.mp4", PictureInput(2) + plain);
    Make("sound alone.mp4", ToneInput(1.23) + plain);
    Make("rounded up.mp4", ToneInput(1.238) + plain);
    Make("surround.mp4", both + plain + QStringList{"-ac", "6"});
    Make("ntsc.mp4", PictureInput(2, "160x120", "30000/1001") + ToneInput(2, 44100) + plain +
                         QStringList{"-bf", "3"});
    Make("60 a second.mp4", PictureInput(1, "160x120", "60") + plain);
    Make("uneven.mp4",
         both + plain +
             QStringList{"-vf", "select='gt(random(0),0.4)'", "-fps_mode", "vfr", "-bf", "2"});
    Make("late sound.mp4",
         PictureInput(2) + QStringList{"-itsoffset", "0.7"} + ToneInput(1) + plain);
    Make("late picture.mp4",
         QStringList{"-itsoffset", "0.7"} + PictureInput(2) + ToneInput(1) + plain);
    Make("h265.mp4", both + QStringList{"-c:v", "libx265", "-preset", "ultrafast", "-x265-params",
                                        "log-level=none", "-c:a", "aac"});
    Make("mp3.mp4", both + QStringList{"-c:v", "mpeg4", "-c:a", "libmp3lame"});
    Make("turned.mp4",
         QStringList{"-i", Path("plain.mp4")} + copy + QStringList{"-metadata:s:v", "rotate=90"});
    Make("half an hour.mp4", PictureInput(1801, "64x48", "2") + plain);
    Make("0.4 seconds.mp4", PictureInput(0.4) + plain);
    Make("one picture.mp4", PictureInput(0.04) + plain);
    Make("cut.mp4", QStringList{"-ss", "0.9", "-i", Path("ntsc.mp4")} + copy);
    Make("cut of a cut.mp4", QStringList{"-ss", "0.41", "-i", Path("cut.mp4")} + copy);
    Make("cut mute.mp4", QStringList{"-ss", "0.77", "-i", Path("mute.mp4")} + copy);
    Make("two sounds.mp4",
         both + ToneInput(1.9, 44100) + plain + QStringList{"-map", "0", "-map", "1", "-map", "2"});
    Make("fine time.mp4", both + plain + QStringList{"-movie_timescale", "90000"});
    for (const char* name : {"\"quoted\" '%1' | \n \u4e2d\u00e4.mp4", "-dash.MP4"}) {
        QVERIFY(QFile::copy(Path("plain.mp4"), Path(QString::fromUtf8(name))));
    }
    Make("fragmented.mp4", both + plain + QStringList{"-movflags", "frag_keyframe+empty_moov"});
    Make("shown early.mp4",
         both + plain + QStringList{"-bf", "3", "-movflags", "negative_cts_offsets"});
    Make("no edit list.mp4", both + plain + QStringList{"-bf", "3", "-use_editlist", "0"});
    Make("time code.mp4", both + plain + QStringList{"-timecode", "01:00:00:00"});
    Make("other kind.mkv", both + plain);
    QVERIFY(QFile::rename(Path("other kind.mkv"), Path("other kind.mp4")));
    QVERIFY(QFile::copy(Path("plain.mp4"), Path("co:lon.mp4")));
    QVERIFY(QFile::copy(Path("plain.mp4"), Path("picture.jpg")));
    const QByteArray plainBytes = Bytes("header first.mp4");
    MakeFile("torn.mp4", plainBytes.left(plainBytes.size() * 3 / 4));
    MakeFile("empty.mp4", {});
    QByteArray endless = Bytes("plain.mp4");
    endless.replace(endless.indexOf("mvhd") + 20, 4, QByteArray(4, '\0'));
    MakeFile("no duration.mp4", endless);
}

void ToolProbeTest::answerIsFfmpegsToTheLetter_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"plain.mp4",
                             "header first.mp4",
                             "mute.mp4",
                             "sound alone.mp4",
                             "rounded up.mp4",
                             "surround.mp4",
                             "ntsc.mp4",
                             "60 a second.mp4",
                             "uneven.mp4",
                             "late sound.mp4",
                             "late picture.mp4",
                             "h265.mp4",
                             "mp3.mp4",
                             "turned.mp4",
                             "half an hour.mp4",
                             "0.4 seconds.mp4",
                             "one picture.mp4",
                             "cut.mp4",
                             "cut of a cut.mp4",
                             "cut mute.mp4",
                             "two sounds.mp4",
                             "fine time.mp4",
                             "\"quoted\" '%1' | \n \u4e2d\u00e4.mp4",
                             "-dash.MP4"}) {
        QTest::newRow(name) << QString::fromUtf8(name);
    }
}

void ToolProbeTest::answerIsFfmpegsToTheLetter()
{
    QFETCH(QString, name);
    const auto text = tool::ProbeText(Path(name).toStdString());
    QVERIFY2(text, "it was left to ffmpeg");
    const Outcome real = RunProgram("ffmpeg", {"-i", Path(name)});
    QCOMPARE(QByteArray::fromStdString(*text), DurationLine(real.error) + '\n');
    const Outcome ours = RunProgram(TOOL_PROGRAM, {"-i", name}, m_folder.path());
    QCOMPARE(ours.code, real.code);
    QCOMPARE(ours.error, QByteArray::fromStdString(*text));
    QCOMPARE(ours.output, QByteArray());
}

void ToolProbeTest::aDurationOfNothingIsNone()
{
    tool::FrugalFile file(Path("no duration.mp4").toStdString(), tool::movieAllowance);
    const auto movie = tool::ReadMovie(file);
    QVERIFY2(movie, "the file is not read at all");
    QVERIFY2(!movie->duration, "a cut from its start would count as one from behind its end");
}

void ToolProbeTest::answerNeedsNoFfmpeg()
{
    qputenv("LUMENFOLD_FFMPEG", "/no/such/program");
    const Outcome probe = RunProgram(TOOL_PROGRAM, {"-i", Path("plain.mp4")});
    const Outcome more = RunProgram(TOOL_PROGRAM, {"-i", Path("plain.mp4"), "-hide_banner"});
    qunsetenv("LUMENFOLD_FFMPEG");
    QCOMPARE(probe.code, 1);
    QVERIFY2(DurationIn(probe.error) > 1.4, probe.error);
    QCOMPARE(more.code, 127);
}

void ToolProbeTest::doubtfulFilesAreLeftToFfmpeg_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"fragmented.mp4", "shown early.mp4", "no edit list.mp4",
                             "time code.mp4", "other kind.mp4", "torn.mp4", "empty.mp4",
                             "no duration.mp4", "co:lon.mp4", "picture.jpg", "missing.mp4", "."}) {
        QTest::newRow(name) << QString(name);
    }
}

void ToolProbeTest::doubtfulFilesAreLeftToFfmpeg()
{
    QFETCH(QString, name);
    const Outcome ours = RunProgram(TOOL_PROGRAM, {"-i", name}, m_folder.path());
    const Outcome real = RunProgram("ffmpeg", {"-i", name}, m_folder.path());
    QCOMPARE(ours.code, real.code);
    QCOMPARE(DurationLine(ours.error), DurationLine(real.error));
    QVERIFY2(ours.error.contains("ffmpeg version"), ours.error);
}

QTEST_GUILESS_MAIN(ToolProbeTest)
#include "tool_probe_test.moc"
