// The duration `tool` reads from a file's headers, compared with what ffmpeg says.
#include "tests/support/tool_movies.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <random>
#include <sys/stat.h>

class ToolProbeTest : public QObject
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
    void oddBoxSizesAreLeftToFfmpeg_data();
    void oddBoxSizesAreLeftToFfmpeg();
    void thousandBoxesInEachOtherAreHarmless();
    void headerAtTheEndOfTenGigabytesIsFound();
    void noDamageReadsMuchOrCrashes();
    void pipesAreNotWaitedFor();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_folder.filePath(name); }
    // Makes a movie and reports a failure. `more`: options before the name.
    void Make(const QString& name, const QStringList& inputs, const QStringList& more);
    QByteArray Bytes(const QString& name) const;
    void Write(const QString& name, const QByteArray& bytes) const;

    QTemporaryDir m_folder;
};

void ToolProbeTest::Make(const QString& name, const QStringList& inputs, const QStringList& more)
{
    const QByteArray problem = MakeMovie(inputs + more + QStringList(Path(name)));
    QVERIFY2(problem.isEmpty(), problem);
}

QByteArray ToolProbeTest::Bytes(const QString& name) const
{
    QFile file(Path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void ToolProbeTest::Write(const QString& name, const QByteArray& bytes) const
{
    QFile file(Path(name));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

void ToolProbeTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    const QStringList both = PictureInput(1.5) + ToneInput(1.5);
    const QStringList plain = PlainCodecs();
    const QStringList copy = {"-c", "copy"};
    Make("plain.mp4", both, plain);
    Make("header first.mp4", both, plain + QStringList{"-movflags", "+faststart"});
    Make("mute.mp4", PictureInput(2), plain);
    Make("sound alone.mp4", ToneInput(1.23), plain);
    Make("rounded up.mp4", ToneInput(1.238), plain);
    Make("surround.mp4", both, plain + QStringList{"-ac", "6"});
    Make("ntsc.mp4", PictureInput(2, "160x120", "30000/1001") + ToneInput(2, 44100),
         plain + QStringList{"-bf", "3"});
    Make("60 a second.mp4", PictureInput(1, "160x120", "60"), plain);
    Make("uneven.mp4", both,
         plain + QStringList{"-vf", "select='gt(random(0),0.4)'", "-fps_mode", "vfr", "-bf", "2"});
    Make("late sound.mp4", PictureInput(2) + QStringList{"-itsoffset", "0.7"} + ToneInput(1),
         plain);
    Make("late picture.mp4", QStringList{"-itsoffset", "0.7"} + PictureInput(2) + ToneInput(1),
         plain);
    Make("h265.mp4", both,
         {"-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=none", "-c:a",
          "aac"});
    Make("mp3.mp4", both, {"-c:v", "mpeg4", "-c:a", "libmp3lame"});
    Make("turned.mp4", {"-i", Path("plain.mp4")}, copy + QStringList{"-metadata:s:v", "rotate=90"});
    Make("half an hour.mp4", PictureInput(1801, "64x48", "2"), plain);
    Make("0.4 seconds.mp4", PictureInput(0.4), plain);
    Make("one picture.mp4", PictureInput(0.04), plain);
    Make("cut.mp4", {"-ss", "0.9", "-i", Path("ntsc.mp4")}, copy);
    Make("cut of a cut.mp4", {"-ss", "0.41", "-i", Path("cut.mp4")}, copy);
    Make("cut mute.mp4", {"-ss", "0.77", "-i", Path("mute.mp4")}, copy);
    Make("two sounds.mp4", both + ToneInput(1.9, 44100),
         plain + QStringList{"-map", "0", "-map", "1", "-map", "2"});
    Make("fine time.mp4", both, plain + QStringList{"-movie_timescale", "90000"});
    for (const char* name : {"\"quoted\" '%1' | \n \u4e2d\u00e4.mp4", "-dash.MP4"}) {
        QVERIFY(QFile::copy(Path("plain.mp4"), Path(QString::fromUtf8(name))));
    }
    Make("fragmented.mp4", both, plain + QStringList{"-movflags", "frag_keyframe+empty_moov"});
    Make("shown early.mp4", both,
         plain + QStringList{"-bf", "3", "-movflags", "negative_cts_offsets"});
    Make("no edit list.mp4", both, plain + QStringList{"-bf", "3", "-use_editlist", "0"});
    Make("time code.mp4", both, plain + QStringList{"-timecode", "01:00:00:00"});
    Make("other kind.mkv", both, plain);
    QVERIFY(QFile::rename(Path("other kind.mkv"), Path("other kind.mp4")));
    QVERIFY(QFile::copy(Path("plain.mp4"), Path("co:lon.mp4")));
    QVERIFY(QFile::copy(Path("plain.mp4"), Path("picture.jpg")));
    const QByteArray plainBytes = Bytes("header first.mp4");
    Write("torn.mp4", plainBytes.left(plainBytes.size() * 3 / 4));
    Write("empty.mp4", {});
    QByteArray endless = Bytes("plain.mp4");
    endless.replace(endless.indexOf("mvhd") + 20, 4, QByteArray(4, '\0'));
    Write("no duration.mp4", endless);
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

void ToolProbeTest::oddBoxSizesAreLeftToFfmpeg_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<QByteArray>("size");
    for (const char* box : {"ftyp", "moov", "mvhd", "trak", "mdia", "elst", "stts", "stsd"}) {
        for (const char* size :
             {"00000000", "00000001", "00000007", "7fffffff", "80000000", "ffffffff"}) {
            // A box without a size extends to the end of the file.
            if (QByteArray(box) != "moov" || QByteArray(size) != "00000000") {
                QTest::addRow("%s %s", box, size) << QByteArray(box) << QByteArray(size);
            }
        }
    }
}

void ToolProbeTest::oddBoxSizesAreLeftToFfmpeg()
{
    QFETCH(QByteArray, box);
    QFETCH(QByteArray, size);
    QByteArray bytes = Bytes("header first.mp4");
    const qsizetype place = bytes.indexOf(box);
    QVERIFY(place >= 4);
    bytes.replace(place - 4, 4, QByteArray::fromHex(size));
    Write("odd.mp4", bytes);
    QVERIFY(!tool::ProbeText(Path("odd.mp4").toStdString()));
    for (const char* wide : {"0000000000000000", "000000000000000f", "7fffffffffffffff",
                             "8000000000000000", "ffffffffffffffff"}) {
        QByteArray more = bytes;
        more.replace(place - 4, 4, QByteArray::fromHex("00000001"));
        more.replace(place + 4, 8, QByteArray::fromHex(wide));
        Write("odd.mp4", more);
        QVERIFY2(!tool::ProbeText(Path("odd.mp4").toStdString()), wide);
    }
}

void ToolProbeTest::thousandBoxesInEachOtherAreHarmless()
{
    for (const char* type : {"moov", "trak", "mdia", "stbl", "edts", "udta"}) {
        QByteArray nested;
        for (int depth = 1; depth <= 1000; ++depth) {
            QByteArray head(4, '\0');
            const int size = 8 * depth;
            head[2] = static_cast<char>(size >> 8);
            head[3] = static_cast<char>(size & 0xff);
            nested.prepend(head + type);
        }
        const QByteArray size = QByteArray::number(nested.size() + 8, 16).rightJustified(8, '0');
        Write("deep.mp4",
              Bytes("plain.mp4").left(28) + QByteArray::fromHex(size) + "moov" + nested);
        tool::FrugalFile file(Path("deep.mp4").toStdString(), tool::movieAllowance);
        QVERIFY2(!tool::ReadMovie(file), type);
        QVERIFY2(file.BytesRead() <= tool::movieAllowance, type);
    }
}

void ToolProbeTest::headerAtTheEndOfTenGigabytesIsFound()
{
    const QByteArray plain = Bytes("plain.mp4");
    const qsizetype moov = plain.indexOf("moov") - 4;
    QFile file(Path("huge.mp4"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const qint64 start = plain.indexOf("mdat") - 4;
    constexpr qint64 size = 10LL * 1024 * 1024 * 1024;
    QByteArray header = QByteArray::fromHex("00000001") + "mdat";
    for (int shift = 56; shift >= 0; shift -= 8) {
        header += static_cast<char>(size >> shift & 0xff);
    }
    QVERIFY(file.write(plain.left(start) + header) > 0);
    QVERIFY(file.seek(start + size));
    QVERIFY(file.write(plain.mid(moov)) > 0);
    file.close();
    tool::FrugalFile frugal(file.fileName().toStdString(), tool::movieAllowance);
    QVERIFY(tool::ReadMovie(frugal));
    QVERIFY2(frugal.BytesRead() < 4096, qPrintable(QString::number(frugal.BytesRead())));
    const auto text = tool::ProbeText(file.fileName().toStdString());
    QVERIFY2(text, "it was left to ffmpeg");
    const QByteArray line = QByteArray::fromStdString(*text);
    QCOMPARE(line.left(23),
             DurationLine(RunProgram("ffmpeg", {"-i", Path("plain.mp4")}).error).left(23));
}

void ToolProbeTest::noDamageReadsMuchOrCrashes()
{
    std::mt19937 random(20180305); // NOLINT(bugprone-random-generator-seed,cert-msc*): repeatable
    const QByteArray values = QByteArray::fromHex("0001027f80feff");
    int refused = 0;
    for (const char* name : {"ntsc.mp4", "cut.mp4", "late sound.mp4", "fragmented.mp4"}) {
        const QByteArray whole = Bytes(name);
        const qsizetype moov = whole.indexOf("moov") - 4;
        for (int round = 0; round < 1000; ++round) {
            QByteArray bytes = whole.left(32) + whole.mid(moov);
            for (auto changes = 1 + random() % 6; changes > 0; --changes) {
                const auto at =
                    static_cast<qsizetype>(random() % static_cast<size_t>(bytes.size()));
                bytes[at] = values[static_cast<qsizetype>(random() % 7)];
            }
            if (random() % 4 == 0) {
                bytes.truncate(
                    static_cast<qsizetype>(random() % static_cast<size_t>(bytes.size())));
            }
            Write("damaged.mp4", bytes);
            tool::FrugalFile file(Path("damaged.mp4").toStdString(), tool::movieAllowance);
            refused += tool::ReadMovie(file) ? 0 : 1;
            QVERIFY(file.BytesRead() <= tool::movieAllowance);
            tool::ProbeText(Path("damaged.mp4").toStdString());
        }
    }
    QVERIFY2(refused > 400, qPrintable(QString::number(refused)));
}

void ToolProbeTest::pipesAreNotWaitedFor()
{
    const QByteArray path = Path("pipe.mp4").toUtf8();
    QCOMPARE(mkfifo(path.constData(), S_IRUSR | S_IWUSR), 0);
    QVERIFY(!tool::ProbeText(path.toStdString()));
}

QTEST_GUILESS_MAIN(ToolProbeTest)
#include "tool_probe_test.moc"
