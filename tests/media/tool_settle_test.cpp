// Fragmented movies become ordinary ones, compared packet by packet with those ffmpeg writes.
#include "tests/support/tool_movies.h"
#include "tool/mp4/boxes.h"
#include "tool/mp4/fragments.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"
#include "tool/mp4/settle.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <limits>
#include <sys/resource.h>

class ToolSettleTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void settledMovieIsTheOrdinaryOne_data();
    void settledMovieIsTheOrdinaryOne();
    void settledMovieIsReadWithoutFfmpeg();
    void movieHalfSettledPlaysAsBefore();
    void movieCutShortAnywherePlaysUpToThere();
    void movieAboveFourGibibytes();
    void whatIsNotFragmentedIsLeftAlone_data();
    void whatIsNotFragmentedIsLeftAlone();
    void fullDiskLeavesTheMovieAsItWas();
    void fullDiskLeavesATornMovieWithoutItsEnd();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_folder.filePath(name); }
    QString Fragmented(const QString& name) const { return Path("fragmented " + name); }
    void Make(const QString& name, const QStringList& arguments);

    QTemporaryDir m_folder;
};

namespace {

struct TopBox
{
    uint32_t type = 0;
    qint64 end = 0;
};

QList<TopBox> TopBoxes(const QString& path)
{
    tool::FrugalFile file(QFile::encodeName(path).toStdString(), 1U << 20U);
    tool::BoxWalk walk(file, 0, file.Size());
    QList<TopBox> boxes;
    while (const auto box = walk.Next()) {
        boxes << TopBox{box->type, static_cast<qint64>(box->end)};
    }
    return walk.Damaged() ? boxes << TopBox() : boxes;
}

bool IsOrdinary(const QString& path)
{
    const QList<TopBox> boxes = TopBoxes(path);
    return boxes.size() == 3 && boxes[0].type == tool::BoxType("ftyp") &&
           boxes[1].type == tool::BoxType("mdat") && boxes[2].type == tool::BoxType("moov");
}

bool Settle(const QString& path)
{
    return tool::SettleMovie(QFile::encodeName(path).toStdString());
}

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

// The digests of the frames, one per line.
Outcome Decoded(const QString& path)
{
    Outcome outcome = RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0",
                                            "-vsync", "passthrough", "-f", "framemd5", "-"});
    QByteArray pictures;
    for (const QByteArray& line : outcome.output.split('\n')) {
        pictures += line.startsWith("0,") ? line.mid(line.lastIndexOf(',')) + '\n' : QByteArray();
    }
    outcome.output = pictures;
    return outcome;
}

constexpr const char* kFragments =
    "-movflags +frag_keyframe+delay_moov+default_base_moof -frag_duration 1000000";

// Limits file sizes to this many bytes, like a full disk.
class FullDisk
{
public:
    explicit FullDisk(qint64 bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{static_cast<rlim_t>(bytes), m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

} // namespace

// The same streams twice: fragmented, and as ffmpeg's ordinary movie.
void ToolSettleTest::Make(const QString& name, const QStringList& arguments)
{
    const QStringList exactly = {"-fflags", "+bitexact", "-flags", "+bitexact", "-threads", "1"};
    const QByteArray one = MakeMovie(arguments + exactly + QString(kFragments).split(' ') +
                                     QStringList{Fragmented(name)});
    QVERIFY2(one.isEmpty(), one);
    const QByteArray other = MakeMovie(arguments + exactly + QStringList{Path(name)});
    QVERIFY2(other.isEmpty(), other);
    QVERIFY2(!IsOrdinary(Fragmented(name)), "nothing is fragmented");
}

void ToolSettleTest::initTestCase()
{
    const QStringList often = PlainCodecs() + QStringList{"-g", "30"};
    Make("mute.mp4", PictureInput(5) + often);
    Make("sound.mp4", PictureInput(5) + ToneInput(5, 44100) + often);
    Make("b frames.mp4", PictureInput(5) + ToneInput(5) +
                             QStringList{"-c:v", "libx264", "-bf", "3", "-pix_fmt", "yuv420p", "-g",
                                         "50", "-c:a", "aac"});
    Make("late sound.mp4",
         PictureInput(5) + QStringList{"-itsoffset", "0.7"} + ToneInput(4) + often);
    Make("sound alone.mp4", ToneInput(5) + PlainCodecs());
    Make("short.mp4", PictureInput(0.04) + often);
    Make("ntsc.mp4", PictureInput(5, "160x120", "29.97") + ToneInput(5, 44100) + often);
    // As in a recording, the first fragment has one frame only.
    Make("recorded.mp4", PictureInput(5, "160x120", "29.97") + ToneInput(5, 44100) + PlainCodecs() +
                             QStringList{"-g", "59", "-force_key_frames", "expr:eq(n,1)"});
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

// What a crash in between leaves: part of the index, or all of it with the old header.
void ToolSettleTest::movieHalfSettledPlaysAsBefore()
{
    const QString path = Path("half settled.mp4");
    const QString source = Fragmented("recorded.mp4");
    const QByteArray fragmented = Content(source);
    QVERIFY(QFile::copy(source, path) && Settle(path));
    const QByteArray settled = Content(path);
    QVERIFY2(settled.size() > fragmented.size() + 1000, "the index is not behind the fragments");
    for (const qsizetype size : {fragmented.size() + 4, fragmented.size() + 700, settled.size()}) {
        QVERIFY(Write(path, fragmented + settled.mid(fragmented.size(), size - fragmented.size())));
        const Outcome decoded = Decoded(path);
        QCOMPARE(decoded.error, QByteArray());
        QCOMPARE(decoded.output, Decoded(source).output);
    }
    // Only the header was changed.
    qsizetype first = 0;
    while (settled[first] == fragmented[first]) {
        ++first;
    }
    QVERIFY2(settled.mid(first + 16, fragmented.size() - first - 16) == fragmented.mid(first + 16),
             "the data was changed");
}

// At each end of a box, next to it, and anywhere.
void ToolSettleTest::movieCutShortAnywherePlaysUpToThere()
{
    const QString source = Fragmented("recorded.mp4");
    const QByteArray whole = Content(source);
    const QList<QByteArray> pictures = Decoded(source).output.split('\n');
    qint64 firstFragment = 0; // where the first fragment ends
    QList<qint64> sizes = {1, 7};
    for (const TopBox& box : TopBoxes(source)) {
        sizes << box.end << box.end + 9;
        if (box.type == tool::BoxType("mdat") && firstFragment == 0) {
            firstFragment = box.end;
        }
    }
    const quint32 seed = QRandomGenerator::global()->generate();
    QRandomGenerator random(seed);
    for (int i = 0; i < 5; ++i) {
        sizes << random.bounded(whole.size());
    }
    const QString path = Path("cut short.mp4");
    for (const qint64 size : sizes) {
        const QByteArray place = QByteArray::number(size) + " of " +
                                 QByteArray::number(whole.size()) + " bytes, seed " +
                                 QByteArray::number(seed);
        QVERIFY(Write(path, whole.left(size)));
        const bool settled = Settle(path);
        QVERIFY2(settled || size < firstFragment, place);
        if (!settled) {
            QVERIFY2(Content(path) == whole.left(size), place);
            continue;
        }
        QVERIFY2(IsOrdinary(path), place);
        const Outcome decoded = Decoded(path);
        QVERIFY2(decoded.error.isEmpty(), place + ": " + decoded.error);
        const QList<QByteArray> left = decoded.output.split('\n');
        const auto count = static_cast<double>(left.size());
        QVERIFY2(left == pictures.mid(0, left.size() - 1) << QByteArray(), place);
        const double share = static_cast<double>(size) / static_cast<double>(whole.size());
        const auto all = static_cast<double>(pictures.size());
        QVERIFY2(count > all * share - 1.5 * all / 5, place + ": " + QByteArray::number(count));
    }
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

void ToolSettleTest::whatIsNotFragmentedIsLeftAlone_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray fragmented = Content(Fragmented("sound.mp4"));
    const QList<TopBox> boxes = TopBoxes(Fragmented("sound.mp4"));
    const auto changed = [&](const QByteArray& box, qsizetype offset, const QByteArray& bytes) {
        QByteArray content = fragmented;
        const qsizetype place = content.indexOf(box);
        return place < 0 ? QByteArray() : content.replace(place + offset, bytes.size(), bytes);
    };
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("This is no movie, though it is rather long.");
    QTest::newRow("ordinary movie") << Content(Path("sound.mp4"));
    QTest::newRow("header alone") << fragmented.left(boxes[1].end);
    QTest::newRow("without its header") << fragmented.mid(boxes[1].end);
    QTest::newRow("header twice") << fragmented + fragmented.mid(boxes[0].end, boxes[1].end);
    QTest::newRow("box of four gigabytes") << changed("trak", -4, "\xff\xff\xff\xff");
    QTest::newRow("box of no size") << changed("mdia", -4, QByteArray(4, '\0'));
    QTest::newRow("no track's number") << changed("trex", 8, "\x7f\xff\xff\xff");
    QTest::newRow("track of no scale") << changed("mdhd", 16, QByteArray(4, '\0'));
    QTest::newRow("a thousand edits") << changed("elst", 8, QByteArray::fromHex("000003e8"));
    QTest::newRow("samples in another file") << changed("tfhd", 7, QByteArray(1, '\x01'));
    QTest::newRow("four billion samples") << changed("trun", 8, "\xff\xff\xff\xff");
    QByteArray nothing = changed("trun", 4, QByteArray::fromHex("00000001ffffffff"));
    nothing.replace(nothing.indexOf("tfhd") + 16, 4, QByteArray(4, '\0')); // no default size
    QTest::newRow("four billion samples of nothing") << nothing;
    QTest::newRow("samples before the file") << changed("trun", 12, "\xff\x00\x00\x00");
    QTest::newRow("time that goes back")
        << changed("tfdt", 8, QByteArray(1, '\0') + QByteArray(7, '\xff'));
}

void ToolSettleTest::whatIsNotFragmentedIsLeftAlone()
{
    QFETCH(QByteArray, content);
    const QString path = Path("odd.mp4");
    QVERIFY(Write(path, content));
    rusage before{};
    rusage after{};
    getrusage(RUSAGE_SELF, &before);
    QVERIFY2(!Settle(path), "it is changed");
    getrusage(RUSAGE_SELF, &after);
    QCOMPARE(Content(path), content);
    constexpr long most = 64L << 10; // KiB
    QVERIFY2(after.ru_maxrss - before.ru_maxrss < most, "it takes a lot of memory");
}

void ToolSettleTest::fullDiskLeavesTheMovieAsItWas()
{
    const QString path = Path("full.mp4");
    const QByteArray content = Content(Fragmented("sound.mp4"));
    for (const int room : {0, 1, 700}) {
        QVERIFY(Write(path, content));
        {
            const FullDisk disk(content.size() + room);
            QVERIFY2(!Settle(path), "the index has room");
        }
        QVERIFY(Content(path) == content);
    }
    QVERIFY2(Settle(path), "it is refused for another reason");
}

void ToolSettleTest::fullDiskLeavesATornMovieWithoutItsEnd()
{
    const QString path = Path("full and torn.mp4");
    const QByteArray content = Content(Fragmented("sound.mp4"));
    const QList<TopBox> boxes = TopBoxes(Fragmented("sound.mp4"));
    const qint64 whole = boxes[5].end; // of the second fragment
    for (const qint64 size : {whole + 5, whole + 100, boxes[7].end - 1}) {
        QVERIFY(Write(path, content.left(size)));
        {
            const FullDisk disk(size);
            QVERIFY2(!Settle(path), "the index has room");
        }
        QCOMPARE(QFileInfo(path).size(), whole);
        QCOMPARE(DecodingErrors(path), QByteArray());
    }
}

QTEST_GUILESS_MAIN(ToolSettleTest)
#include "tool_settle_test.moc"
