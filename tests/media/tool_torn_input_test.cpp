// The recorder's commands for an interrupted recording: complete fragments are read.
#include "tests/support/tool_movies.h"
#include "tool/edit/torn_input.h"
#include "tool/mp4/boxes.h"
#include "tool/mp4/frugal_file.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class ToolTornInputTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void recordingCutShortIsCutAndMerged_data();
    void recordingCutShortIsCutAndMerged();
    void everyTornInputIsReadUpToItsLastCompleteFragment();
    void everythingElseIsReadAsItIs_data();
    void everythingElseIsReadAsItIs();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    QByteArray m_recording;       // 6 s, in fragments of a second
    QList<qint64> m_fragmentEnds; // where each fragment ends
};

namespace {

// What the recorder takes for a failure.
bool IsFailure(const Outcome& outcome)
{
    return outcome.code != 0 || outcome.error.contains("Invalid data") ||
           outcome.error.contains("No such file");
}

} // namespace

void ToolTornInputTest::initTestCase()
{
    const QString path = Path("whole.mp4");
    const QByteArray fault = MakeMovie(
        PictureInput(6, "160x120", "30") + ToneInput(6) + PlainCodecs() +
        QStringList{"-g", "30", "-movflags", "+frag_keyframe+delay_moov+default_base_moof", path});
    QVERIFY2(fault.isEmpty(), fault);
    m_recording = Content(path);
    tool::FrugalFile file(QFile::encodeName(path).toStdString(), 1U << 20U);
    tool::BoxWalk walk(file, 0, file.Size());
    while (const auto box = walk.Next()) {
        if (box->type == tool::BoxType("mdat")) {
            m_fragmentEnds << static_cast<qint64>(box->end);
        }
    }
    QVERIFY(m_fragmentEnds.size() >= 6);
}

void ToolTornInputTest::recordingCutShortIsCutAndMerged_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<int>("zeros");
    const qint64 end = m_fragmentEnds.size() > 4 ? m_fragmentEnds[4] : 0;
    QTest::newRow("complete fragments") << "a.mp4" << end << 0;
    QTest::newRow("half of what tells the samples") << "a.mp4" << end + 60 << 0;
    QTest::newRow("half of the samples") << "a.mp4" << (end + m_fragmentEnds.value(5)) / 2 << 0;
    QTest::newRow("zeros of the file system") << "a.mp4" << end << 5000;
    QTest::newRow("odd name") << "2026-11-21 10-00-00,end,1,,:\u4e2d.mp4" << end + 60 << 0;
}

void ToolTornInputTest::recordingCutShortIsCutAndMerged()
{
    QFETCH(QString, name);
    QFETCH(qint64, size);
    QFETCH(int, zeros);
    const QTemporaryDir folder;
    const QString source = folder.filePath(name);
    const QByteArray content = m_recording.left(size) + QByteArray(zeros, '\0');
    QVERIFY(Write(source, content));

    const Outcome probe = RunProgram(TOOL_PROGRAM, {"-i", source});
    QVERIFY2(!probe.error.contains("Invalid data"), probe.error);
    QVERIFY2(std::abs(DurationIn(probe.error) - 5) < 0.1, probe.error);

    const QString cut = folder.filePath("cut.mp4");
    const Outcome cutting =
        RunProgram(TOOL_PROGRAM, {"-i", source, "-ss", "2", "-t", "3", "-codec", "copy", cut});
    QVERIFY2(!IsFailure(cutting), cutting.error);
    QCOMPARE(PictureDigests(cut).size(), 90);
    QCOMPARE(DecodingErrors(cut), QByteArray());

    const QString part = folder.filePath("part.ts");
    const Outcome converting =
        RunProgram(TOOL_PROGRAM, {"-i", source, "-vcodec", "copy", "-acodec", "copy", "-vbsf",
                                  "h264_mp4toannexb", part});
    QVERIFY2(!IsFailure(converting), converting.error);
    const QString joined = folder.filePath("joined.mp4");
    const Outcome joining =
        RunProgram(TOOL_PROGRAM, {"-i", "concat:" + part + "|" + part + "|", "-acodec", "copy",
                                  "-vcodec", "copy", "-absf", "aac_adtstoasc", joined});
    QVERIFY2(!IsFailure(joining), joining.error);
    QCOMPARE(PictureDigests(joined).size(), 300);
    QCOMPARE(DecodingErrors(joined), QByteArray());
    QVERIFY2(Content(source) == content, "the source was changed");
}

void ToolTornInputTest::everyTornInputIsReadUpToItsLastCompleteFragment()
{
    const std::string torn = Path("torn.mp4").toStdString();
    const std::string other = Path("torn elsewhere.mp4").toStdString();
    const std::string whole = Path("whole.mp4").toStdString();
    QVERIFY(Write(Path("torn.mp4"), m_recording.left(m_fragmentEnds[2] + 60)));
    QVERIFY(Write(Path("torn elsewhere.mp4"), m_recording.left(m_fragmentEnds[4] - 1)));
    const auto part = [&](int fragment, const std::string& path) {
        return "subfile,,start,0,end," + std::to_string(m_fragmentEnds[fragment]) + ",,:" + path;
    };
    const tool::Arguments given = {"-i", torn,  "-i", whole, "-ss", torn,
                                   "-i", other, "-t", "3",   torn,  "-i"};
    const tool::Arguments read = {"-i", part(2, torn),  "-i", whole, "-ss", torn,
                                  "-i", part(3, other), "-t", "3",   torn,  "-i"};
    QVERIFY(tool::WithoutTornEnds(given) == read);
}

void ToolTornInputTest::everythingElseIsReadAsItIs_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("whole") << m_recording;
    QTest::newRow("torn in its first fragment") << m_recording.left(m_fragmentEnds.value(0) - 1);
    QTest::newRow("header alone") << m_recording.left(40);
    QTest::newRow("text") << QByteArray("no movie at all, and rather long");
    QTest::newRow("empty") << QByteArray();
    QByteArray ordinary = m_recording;
    QTest::newRow("ordinary, torn")
        << ordinary.replace("moof", "free").left(m_fragmentEnds.value(3) + 9);
}

void ToolTornInputTest::everythingElseIsReadAsItIs()
{
    QFETCH(QByteArray, content);
    const QString path = Path("other.mp4");
    QVERIFY(Write(path, content));
    const tool::Arguments arguments = {"-i", path.toStdString(), "-f", "null", "-"};
    QVERIFY(tool::WithoutTornEnds(arguments) == arguments);
}

QTEST_GUILESS_MAIN(ToolTornInputTest)
#include "tool_torn_input_test.moc"
