// Edit lists as other programs write them: what `tool` understands of them is what ffmpeg shows,
// and what it does not understand it leaves to ffmpeg.
#include "tests/support/tool_movies.h"
#include "tool/mp4/box_writer.h"
#include "tool/mp4/edit_list.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr int64_t kNone = -1;
constexpr uint32_t kNormalRate = 0x10000;

struct Edit
{
    uint64_t duration = 0;
    int64_t mediaTime = 0; // -1: nothing is shown
    uint32_t rate = kNormalRate;
};

std::string EditListBox(const QList<Edit>& edits, int version, qsizetype count)
{
    const size_t width = version == 1 ? 8 : 4;
    std::string bytes;
    {
        const tool::OpenBox container(bytes, tool::BoxType("edts"));
        const tool::OpenBox box(bytes, tool::BoxType("elst"));
        tool::AppendNumber(bytes, static_cast<uint64_t>(version) << 24U, 4);
        tool::AppendNumber(bytes, static_cast<uint64_t>(count), 4);
        for (const Edit& edit : edits) {
            tool::AppendNumber(bytes, edit.duration, width);
            tool::AppendNumber(bytes, static_cast<uint64_t>(edit.mediaTime), width);
            tool::AppendNumber(bytes, edit.rate, 4);
        }
    }
    return bytes;
}

// The movie of one track with another "edts" box. Its movie box is behind its samples.
QByteArray WithEditList(QByteArray movie, const std::string& box)
{
    const auto sizeAt = [&](qsizetype offset) {
        return tool::BigEndian({movie.constData() + offset, 4});
    };
    const qsizetype old = movie.indexOf("edts") - 4;
    const auto oldSize = static_cast<qsizetype>(sizeAt(old));
    for (const char* parent : {"moov", "trak"}) {
        const qsizetype offset = movie.indexOf(parent) - 4;
        std::string size;
        tool::AppendNumber(size, sizeAt(offset) + box.size() - static_cast<uint64_t>(oldSize), 4);
        movie.replace(offset, 4, QByteArray::fromStdString(size));
    }
    return movie.replace(old, oldSize, QByteArray::fromStdString(box));
}

QString Time(const std::optional<int64_t>& time)
{
    return time ? QString::number(*time) : QString("unknown");
}

} // namespace

class ToolEditListTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void usualEditsAreUnderstoodAsFfmpegDoes_data();
    void usualEditsAreUnderstoodAsFfmpegDoes();
    void unusualEditsAreLeftToFfmpeg_data();
    void unusualEditsAreLeftToFfmpeg();
    void writtenEditListIsReadAgain_data();
    void writtenEditListIsReadAgain();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_folder.filePath(name); }
    // Gives the movie this edit list and reads its track.
    void Read(const QByteArray& box, tool::MovieTrack& track);
    // Whether the duration told without ffmpeg, if any, is the one ffmpeg tells.
    void CompareWithFfmpeg(bool& told);

    QTemporaryDir m_folder;
    QByteArray m_movie;  // 2 s
    int64_t m_ticks = 0; // of the media, in a second
    static constexpr qint64 kSecond = 1000000;
};

void ToolEditListTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    const QByteArray problem =
        MakeMovie(PictureInput(2) + PlainCodecs() + QStringList(Path("plain.mp4")));
    QVERIFY2(problem.isEmpty(), problem);
    m_movie = Content(Path("plain.mp4"));
    QVERIFY2(m_movie.indexOf("mdat") < m_movie.indexOf("moov"), "the movie box comes first");
    tool::FrugalFile file(Path("plain.mp4").toStdString(), tool::movieAllowance);
    const auto movie = tool::ReadMovie(file);
    QVERIFY(movie && movie->tracks.size() == 1);
    m_ticks = movie->tracks[0].timescale;
    QCOMPARE(movie->tracks[0].mediaDuration, static_cast<uint64_t>(2 * m_ticks));
}

void ToolEditListTest::Read(const QByteArray& box, tool::MovieTrack& track)
{
    QVERIFY(Write(Path("edited.mp4"), WithEditList(m_movie, box.toStdString())));
    tool::FrugalFile file(Path("edited.mp4").toStdString(), tool::movieAllowance);
    const auto movie = tool::ReadMovie(file);
    QVERIFY2(movie && movie->tracks.size() == 1, "the movie is not read at all");
    track = movie->tracks[0];
}

void ToolEditListTest::CompareWithFfmpeg(bool& told)
{
    const auto text = tool::ProbeText(Path("edited.mp4").toStdString());
    told = text.has_value();
    if (told) {
        const Outcome real = RunProgram("ffmpeg", {"-i", Path("edited.mp4")});
        QCOMPARE(QByteArray::fromStdString(*text), DurationLine(real.error) + '\n');
    }
}

void ToolEditListTest::usualEditsAreUnderstoodAsFfmpegDoes_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<qint64>("trimmed");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("end");
    const auto row = [](const char* name, const QList<Edit>& edits, qint64 trimmed, qint64 start,
                        qint64 end) {
        for (const int version : {0, 1}) {
            const std::string box = EditListBox(edits, version, edits.size());
            QTest::addRow("%s, version %d", name, version)
                << QByteArray::fromStdString(box) << trimmed << start << end;
        }
    };
    const int64_t half = m_ticks / 2;
    row("everything", {{2000, 0}}, 0, 0, 2 * kSecond);
    row("starts late", {{500, kNone}, {2000, 0}}, 0, kSecond / 2, 5 * kSecond / 2);
    row("without a delay", {{0, kNone}, {2000, 0}}, 0, 0, 2 * kSecond);
    row("without its start", {{1500, half}}, kSecond / 2, 0, 3 * kSecond / 2);
    row("late and without its start", {{300, kNone}, {1500, half}}, kSecond / 2, 3 * kSecond / 10,
        9 * kSecond / 5);
    row("without its end", {{1000, 0}}, 0, 0, kSecond);
    row("the middle", {{1000, half}}, kSecond / 2, 0, kSecond);
    row("of no duration", {{0, 0}}, 0, 0, 2 * kSecond);
    row("of no duration, without its start", {{0, half}}, kSecond / 2, 0, 3 * kSecond / 2);
    row("longer than the media", {{9000, 0}}, 0, 0, 2 * kSecond);
    row("from behind the end", {{1000, 6 * half}}, 3 * kSecond, kNone, kNone);
}

void ToolEditListTest::usualEditsAreUnderstoodAsFfmpegDoes()
{
    QFETCH(QByteArray, box);
    QFETCH(qint64, trimmed);
    QFETCH(qint64, start);
    QFETCH(qint64, end);
    tool::MovieTrack track;
    Read(box, track);
    QVERIFY2(!track.unusualEdits, "it is not understood");
    QCOMPARE(track.trimmedStart, trimmed);
    QCOMPARE(static_cast<qint64>(track.trimmedTicks) * kSecond / m_ticks, trimmed);
    QCOMPARE(Time(track.start), start == kNone ? QString("unknown") : QString::number(start));
    QCOMPARE(Time(track.end), end == kNone ? QString("unknown") : QString::number(end));
    bool told = false;
    CompareWithFfmpeg(told);
    QCOMPARE(told, start != kNone);
}

void ToolEditListTest::unusualEditsAreLeftToFfmpeg_data()
{
    QTest::addColumn<QByteArray>("box");
    const auto row = [](const char* name, const QList<Edit>& edits, int count = 0,
                        int onlyVersion = kNone) {
        for (const int version : {0, 1, 2}) {
            if (version == onlyVersion || (onlyVersion == kNone && version < 2)) {
                const std::string box =
                    EditListBox(edits, version, count != 0 ? count : edits.size());
                QTest::addRow("%s, version %d", name, version) << QByteArray::fromStdString(box);
            }
        }
    };
    const int64_t half = m_ticks / 2;
    row("no edits", {});
    row("two parts", {{500, 0}, {500, 2 * half}});
    row("a pause in the middle", {{500, 0}, {500, kNone}, {500, half}});
    row("a pause at the end", {{500, 0}, {500, kNone}});
    row("nothing but a pause", {{500, kNone}});
    row("two pauses", {{500, kNone}, {500, kNone}});
    row("pauses before the picture", {{500, kNone}, {500, kNone}, {2000, 0}});
    row("half the speed", {{4000, 0, kNormalRate / 2}});
    row("twice the speed", {{1000, 0, 2 * kNormalRate}});
    row("a still picture", {{2000, 0, 0}});
    row("backwards", {{2000, 0, 0U - kNormalRate}});
    row("from a time before any", {{2000, -2}});
    row("from a time after any", {{2000, INT64_MAX}}, 0, 1);
    row("more edits than there are", {{2000, 0}}, 2);
    row("four billion edits", {{2000, 0}}, -1);
    row("of a version to come", {{2000, 0}}, 0, 2);
}

void ToolEditListTest::unusualEditsAreLeftToFfmpeg()
{
    QFETCH(QByteArray, box);
    tool::MovieTrack track;
    Read(box, track);
    QVERIFY2(track.unusualEdits, "it is taken for a usual one");
    QCOMPARE(Time(track.start), QString("unknown"));
    QCOMPARE(Time(track.end), QString("unknown"));
    QCOMPARE(track.trimmedStart, int64_t{0});
    bool told = false;
    CompareWithFfmpeg(told);
    QVERIFY2(!told, "a duration is told without ffmpeg");
}

void ToolEditListTest::writtenEditListIsReadAgain_data()
{
    QTest::addColumn<quint64>("emptyDuration");
    QTest::addColumn<quint64>("segmentDuration");
    QTest::addColumn<quint64>("mediaTime");
    QTest::addColumn<int>("bytes");
    QTest::newRow("one edit") << 0ULL << 2000ULL << 1024ULL << 36;
    QTest::newRow("a pause before it") << 700ULL << 2000ULL << 0ULL << 48;
    QTest::newRow("fifty days") << 0ULL << (1ULL << 32U) << 0ULL << 44;
    QTest::newRow("beyond 31 bits") << 0ULL << 2000ULL << 3000000000ULL << 44;
    QTest::newRow("beyond 32 bits") << (1ULL << 40U) << 2000ULL << (1ULL << 40U) << 64;
}

void ToolEditListTest::writtenEditListIsReadAgain()
{
    QFETCH(quint64, emptyDuration);
    QFETCH(quint64, segmentDuration);
    QFETCH(quint64, mediaTime);
    std::string bytes;
    tool::AppendEditList(bytes, {emptyDuration, segmentDuration, mediaTime});
    QTEST(static_cast<int>(bytes.size()), "bytes");
    QVERIFY(Write(Path("list"), QByteArray::fromStdString(bytes)));
    tool::FrugalFile file(Path("list").toStdString(), 1000);
    const auto box =
        tool::FindChild(file, {tool::BoxType("edts"), 8, file.Size()}, tool::BoxType("elst"));
    QVERIFY2(box, "there is no edit list");
    const auto list = tool::ReadEditList(file, *box);
    QVERIFY2(list, "it is not understood");
    QCOMPARE(list->emptyDuration, uint64_t{emptyDuration});
    QCOMPARE(list->segmentDuration, uint64_t{segmentDuration});
    QCOMPARE(list->mediaTime, uint64_t{mediaTime});
}

QTEST_GUILESS_MAIN(ToolEditListTest)
#include "tool_edit_list_test.moc"
