// Fragmented movies become ordinary ones, compared packet by packet with those ffmpeg writes.
#include "tests/support/fragmented_movies.h"
#include "tool/mp4/fragments.h"
#include "tool/mp4/movie.h"

#include <QFile>
#include <QFileInfo>

class ToolSettleTest : public FragmentedMoviesTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void settledMovieIsTheOrdinaryOne_data();
    void settledMovieIsTheOrdinaryOne();
    void settledMovieIsReadWithoutFfmpeg();
    void movieAboveFourGibibytes();
};

namespace {

// The times, sizes, flags and contents of all packets, and the stream descriptions.
QByteArray Packets(const QString& path)
{
    const QString shown = "packet=stream_index,pts,dts,duration,size,flags,data_hash:stream=codec_"
                          "name,start_pts,duration_ts,nb_frames,width,height,sample_rate:format="
                          "duration";
    const Outcome outcome = RunProgram("ffprobe", {"-v", "error", "-show_data_hash", "md5",
                                                   "-show_entries", shown, "-of", "compact", path});
    QList<QByteArray> lines = outcome.output.split('\n');
    std::sort(lines.begin(), lines.end()); // the streams are interleaved differently
    return lines.join('\n') + outcome.error;
}

} // namespace

void ToolSettleTest::initTestCase()
{
    const QStringList often = PlainCodecs() + QStringList{"-g", "30"};
    MakeBoth("mute.mp4", PictureInput(5) + often);
    MakeBoth("sound.mp4", PictureInput(5) + ToneInput(5, 44100) + often);
    MakeBoth("b frames.mp4", PictureInput(5) + ToneInput(5) +
                                 QStringList{"-c:v", "libx264", "-bf", "3", "-pix_fmt", "yuv420p",
                                             "-g", "50", "-c:a", "aac"});
    MakeBoth("late sound.mp4",
             PictureInput(5) + QStringList{"-itsoffset", "0.7"} + ToneInput(4) + often);
    MakeBoth("sound alone.mp4", ToneInput(5) + PlainCodecs());
    MakeBoth("short.mp4", PictureInput(0.04) + often);
    MakeBoth("ntsc.mp4", PictureInput(5, "160x120", "29.97") + ToneInput(5, 44100) + often);
    MakeRecorded();
}

void ToolSettleTest::settledMovieIsTheOrdinaryOne_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"mute.mp4", "sound.mp4", "b frames.mp4", "late sound.mp4",
                             "sound alone.mp4", "short.mp4", "ntsc.mp4", "recorded.mp4"}) {
        QTest::newRow(name) << name;
    }
}

void ToolSettleTest::settledMovieIsTheOrdinaryOne()
{
    QFETCH(QString, name);
    const QString path = Path("settled " + name);
    QVERIFY(QFile::copy(Fragmented(name), path));
    QVERIFY2(Settle(path), "it is refused");
    QVERIFY2(IsOrdinary(path), "it is still fragmented");
    QCOMPARE(Packets(path), Packets(Path(name)));
    QCOMPARE(DecodingErrors(path), QByteArray());
    const QStringList later = {"-ss", "3"};
    QCOMPARE(PictureDigests(path, later), PictureDigests(Path(name), later));
    const QByteArray settled = Content(path);
    QVERIFY2(!Settle(path), "an ordinary movie is changed");
    QCOMPARE(Content(path), settled);
}

void ToolSettleTest::settledMovieIsReadWithoutFfmpeg()
{
    const QString path = Path("read.mp4");
    QVERIFY(QFile::copy(Fragmented("recorded.mp4"), path));
    QVERIFY(!tool::ProbeText(path.toStdString()));
    QVERIFY(Settle(path));
    const auto text = tool::ProbeText(path.toStdString());
    QVERIFY2(text, "only ffmpeg reads it");
    const Outcome asked = RunProgram("ffmpeg", {"-hide_banner", "-i", path});
    QCOMPARE(DurationLine(QByteArray::fromStdString(*text)), DurationLine(asked.error));
}

// A hole of that size before the fragments.
void ToolSettleTest::movieAboveFourGibibytes()
{
    const QString path = Path("large.mp4");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QByteArray fragmented = Content(Fragmented("sound.mp4"));
    const qint64 header = TopBoxes(Fragmented("sound.mp4"))[1].end;
    constexpr qint64 hole = 5LL << 30;
    QByteArray free = QByteArray::fromHex("00000001") + "free" + QByteArray(8, '\0');
    for (int i = 0; i < 8; ++i) {
        free[8 + i] = static_cast<char>(hole >> 8 * (7 - i) & 0xff);
    }
    file.write(fragmented.left(header) + free);
    if (!file.resize(header + hole)) {
        QSKIP("no file of 5 GiB can be made here");
    }
    file.seek(header + hole);
    file.write(fragmented.mid(header));
    file.close();
    QVERIFY2(Settle(path), "it is refused");
    QVERIFY(IsOrdinary(path));
    QVERIFY(QFileInfo(path).size() > hole);
    QCOMPARE(Packets(path), Packets(Path("sound.mp4")));
    QVERIFY(QFile::remove(path));
}

QTEST_GUILESS_MAIN(ToolSettleTest)
#include "tool_settle_test.moc"
