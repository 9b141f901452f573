// Joins of movies that fit together: they are copied, without a gap between them.
#include "tests/support/tool_joins.h"
#include "tool/mp4/settle.h"

#include <QTest>

#include <utility>

namespace {

constexpr double kRate = 30000 / 1001.0;

// A moving picture with flashes and a tone with beeps, as the recorder would write them.
QStringList RecordingOf(double seconds, double soundSeconds, const QString& more)
{
    const QString picture = QString("testsrc2=s=160x120:r=30000/1001:d=%1,lutyuv=y=val/5+16,"
                                    "drawbox=c=white:t=fill:enable='lt(mod(t+0.001,1),0.1)'")
                                .arg(seconds);
    return QStringList{"-f", "lavfi", "-i", picture} + BeepInput(soundSeconds) + PlainCodecs() +
           QStringList{"-ac", "2", "-g", "59"} + more.split(' ');
}

struct Frame
{
    QByteArray digest;
    double seconds = 0;
};

// The frames as a player shows them.
QList<Frame> Frames(const QString& path)
{
    const Outcome outcome =
        RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0:v", "-fps_mode",
                              "passthrough", "-enc_time_base", "1:90000", "-f", "framemd5", "-"});
    QList<Frame> frames;
    double unit = 0;
    for (const QByteArray& line : outcome.output.split('\n')) {
        if (line.startsWith("#tb 0: ")) {
            const QList<QByteArray> fraction = line.mid(7).split('/');
            unit = fraction.value(0).toDouble() / fraction.value(1).toDouble();
        } else if (line.startsWith("0,")) {
            const QList<QByteArray> fields = line.split(',');
            frames << Frame{fields.last().trimmed(), fields[2].trimmed().toDouble() * unit};
        }
    }
    return frames;
}

// Appends the frames of a part that begins then. Returns its length in seconds.
double AppendFrames(const QString& path, double begin, QList<Frame>& frames)
{
    const bool interrupted = path.endsWith("interrupted.mp4");
    // ffmpeg does not read what is incomplete at the end.
    const QList<Frame> own = Frames(path).mid(0, interrupted ? 118 : -1);
    // Of fragments, ffmpeg shows the sound that the edit list hides.
    const bool fragmented =
        interrupted || path.endsWith("unsettled.mp4") || path.endsWith("fragments.mp4");
    const double shift = fragmented && !own.isEmpty() ? own.first().seconds : 0;
    for (const Frame& frame : own) {
        frames << Frame{frame.digest, begin + frame.seconds - shift};
    }
    return own.isEmpty() ? 0 : own.last().seconds - shift + 1 / kRate;
}

// Compares moments in seconds. Returns what is wrong, or "".
QByteArray FaultInTimes(const char* what, const QList<double>& found, const QList<double>& expected)
{
    if (found.size() != expected.size()) {
        return QByteArray::number(found.size()) + ' ' + what + " of " +
               QByteArray::number(expected.size());
    }
    for (qsizetype i = 0; i < found.size(); ++i) {
        if (std::abs(found[i] - expected[i]) > 0.05) {
            return QByteArray(what) + " at " + QByteArray::number(found[i]) + " s, not at " +
                   QByteArray::number(expected[i]);
        }
    }
    return {};
}

} // namespace

class ToolJoinCopyTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void whatFitsIsCopied_data();
    void whatFitsIsCopied();
    void everyFrameIsShownOnceAndInStep_data();
    void everyFrameIsShownOnceAndInStep();
    void twentyFilesEndInStep_data();
    void twentyFilesEndInStep();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    void Make(const QString& name, const QStringList& arguments);
    void Settle(const QString& name);

    JoinFolder m_folder;
};

void ToolJoinCopyTest::Make(const QString& name, const QStringList& arguments)
{
    const QByteArray problem = MakeMovie(arguments + QStringList(m_folder.Path(name)));
    QVERIFY2(problem.isEmpty(), problem);
}

void ToolJoinCopyTest::Settle(const QString& name)
{
    QVERIFY(tool::SettleMovie(m_folder.Path(name).toStdString()));
}

// Recordings, some of them interrupted, trims of them, and movies like those of a camera.
void ToolJoinCopyTest::initTestCase()
{
    const QString fragmented = "-movflags +frag_keyframe+delay_moov+default_base_moof";
    for (const char* name : {"recording.mp4", "unsettled.mp4", "interrupted.mp4"}) {
        Make(name, RecordingOf(4.4, 4.42, fragmented));
    }
    Settle("recording.mp4");
    QFile interrupted(m_folder.Path("interrupted.mp4"));
    QVERIFY(interrupted.resize(interrupted.size() - 9000)); // within the last fragment
    Make("second.mp4", RecordingOf(2.5, 2.45, fragmented));
    Settle("second.mp4");
    Make("trim.mp4", {"-ss", "0", "-i", m_folder.Path("recording.mp4"), "-t", "3.5", "-c", "copy"});
    const QString camera = m_folder.Path("camera.mp4");
    Make("camera.mp4", RecordingOf(3.4, 3.4, "-bf 3"));
    Make("camera trim.mp4", {"-ss", "0", "-i", camera, "-t", "2.5", "-c", "copy"});
    Make("remuxed.mp4", {"-i", camera, "-c", "copy", "-movflags", "faststart"});
    Make("camera fragments.mp4", QStringList{"-i", camera, "-c", "copy"} + fragmented.split(' '));
}

void ToolJoinCopyTest::whatFitsIsCopied_data()
{
    QTest::addColumn<QStringList>("sources");
    const auto row = [](const QStringList& sources) {
        QTest::newRow(qPrintable(sources.join(", "))) << sources;
    };
    row({"plain.mp4"});
    row({"plain.mp4", "longer.mp4", "plain.mp4"});
    row({"mute.mp4", "mute.mp4"});
    row({"b frames.mp4", "b frames.mp4"});
    row({"surround.mp4", "surround.mp4"});
    row({"h265.mp4", "h265.mp4"});
    row({"plain.mp4", "fragmented.mp4"});
    row({"sound alone.mp4", "sound alone.mp4"});
}

void ToolJoinCopyTest::whatFitsIsCopied()
{
    QFETCH(QStringList, sources);
    const Outcome outcome = m_folder.Merge(sources);
    QVERIFY2(outcome.code == 0, outcome.error);
    const bool alone = sources.first().startsWith("mute") || sources.first().startsWith("sound");
    QCOMPARE(outcome.error.count("(copy)"), alone ? 1 : 2);
    QCOMPARE(m_folder.FaultIn(sources), QByteArray());
}

void ToolJoinCopyTest::everyFrameIsShownOnceAndInStep_data()
{
    QTest::addColumn<QStringList>("sources");
    const auto row = [](const QStringList& sources) {
        QTest::newRow(qPrintable(sources.join(", "))) << sources;
    };
    row({"recording.mp4", "second.mp4", "recording.mp4"});
    row({"trim.mp4", "recording.mp4", "trim.mp4"});
    row({"unsettled.mp4", "recording.mp4", "unsettled.mp4"});
    row({"interrupted.mp4", "interrupted.mp4", "recording.mp4"});
    row({"camera.mp4", "camera trim.mp4", "camera.mp4"});
    row({"remuxed.mp4", "camera fragments.mp4", "remuxed.mp4"});
    row({"second.mp4"});
}

// All frames one after another, each part's first one right after the last one before it, and
// flashes and beeps where they were in each part.
void ToolJoinCopyTest::everyFrameIsShownOnceAndInStep()
{
    QFETCH(QStringList, sources);
    constexpr double hardly = 0.02; // seconds of a flash or beep before the join
    QList<Frame> frames;
    QList<double> flashes;
    QList<double> beeps;
    double end = 0;
    for (qsizetype i = 0; i < sources.size(); ++i) {
        const QString path = m_folder.Path(sources[i]);
        const double begin = std::exchange(end, end + AppendFrames(path, end, frames));
        const double last = i + 1 < sources.size() ? end - hardly : end;
        for (const double time : FlashTimes(path)) {
            flashes << QList<double>(begin + time < last ? 1 : 0, begin + time);
        }
        for (const double time : BeepTimes(path)) {
            beeps << QList<double>(begin + time < last ? 1 : 0, begin + time);
        }
    }
    const Outcome outcome = m_folder.Merge(sources);
    QVERIFY2(outcome.code == 0 && outcome.error.count("(copy)") == 2, outcome.error);
    const QList<Frame> found = Frames(m_folder.Result());
    QCOMPARE(found.size(), frames.size());
    for (qsizetype i = 0; i < found.size(); ++i) {
        QVERIFY2(found[i].digest == frames[i].digest,
                 "frame " + QByteArray::number(i) + " is another one");
        QVERIFY2(std::abs(found[i].seconds - frames[i].seconds) < 0.001,
                 "frame " + QByteArray::number(i) + " is shown at " +
                     QByteArray::number(found[i].seconds) + " s, not at " +
                     QByteArray::number(frames[i].seconds));
    }
    QCOMPARE(FaultInTimes("flashes", FlashTimes(m_folder.Result()), flashes), QByteArray());
    QCOMPARE(FaultInTimes("beeps", BeepTimes(m_folder.Result()), beeps), QByteArray());
    QCOMPARE(DecodingErrors(m_folder.Result()), QByteArray());
}

void ToolJoinCopyTest::twentyFilesEndInStep_data()
{
    QTest::addColumn<QStringList>("some");
    QTest::newRow("ordinary") << QStringList{"plain.mp4", "longer.mp4"};
    QTest::newRow("b frames") << QStringList{"b frames.mp4"};
    QTest::newRow("uneven") << QStringList{"uneven.mp4"};
    QTest::newRow("sound ends early") << QStringList{"as recorded.mp4"};
    QTest::newRow("late sound") << QStringList{"late sound.mp4"};
}

void ToolJoinCopyTest::twentyFilesEndInStep()
{
    QFETCH(QStringList, some);
    QStringList sources;
    for (int i = 0; i < 20; ++i) {
        sources << some[i % some.size()];
    }
    const Outcome outcome = m_folder.Merge(sources);
    QVERIFY2(outcome.code == 0 && outcome.error.count("(copy)") == 2, outcome.error);
    QCOMPARE(m_folder.FaultIn(sources), QByteArray());
    const double end = JoinFolder::Duration(m_folder.Result());
    QCOMPARE(m_folder.FaultInStep(end - 6), QByteArray());
}

QTEST_GUILESS_MAIN(ToolJoinCopyTest)
#include "tool_join_copy_test.moc"
