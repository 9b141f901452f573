// Fragmented movies that are cut short, damaged or meet a full disk when they are settled.
#include "tests/support/fragmented_movies.h"
#include "tool/mp4/fragments.h"
#include "tool/mp4/movie.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <csignal>
#include <sys/resource.h>

class ToolSettleFaultsTest : public FragmentedMoviesTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void movieHalfSettledPlaysAsBefore();
    void movieCutShortAnywherePlaysUpToThere();
    void whatIsNotFragmentedIsLeftAlone_data();
    void whatIsNotFragmentedIsLeftAlone();
    void fullDiskLeavesTheMovieAsItWas();
    void fullDiskLeavesATornMovieWithoutItsEnd();
};

namespace {

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

void ToolSettleFaultsTest::initTestCase()
{
    MakeBoth("sound.mp4",
             PictureInput(5) + ToneInput(5, 44100) + PlainCodecs() + QStringList{"-g", "30"});
    MakeRecorded();
}

// What a crash in between leaves: part of the index, or all of it with the old header.
void ToolSettleFaultsTest::movieHalfSettledPlaysAsBefore()
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
void ToolSettleFaultsTest::movieCutShortAnywherePlaysUpToThere()
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

void ToolSettleFaultsTest::whatIsNotFragmentedIsLeftAlone_data()
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

void ToolSettleFaultsTest::whatIsNotFragmentedIsLeftAlone()
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

void ToolSettleFaultsTest::fullDiskLeavesTheMovieAsItWas()
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

void ToolSettleFaultsTest::fullDiskLeavesATornMovieWithoutItsEnd()
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

QTEST_GUILESS_MAIN(ToolSettleFaultsTest)
#include "tool_settle_faults_test.moc"
