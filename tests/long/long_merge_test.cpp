// Merges two gigabytes in the real window onto a disk that takes 20 MB a second, which the program
// does not wait for.
#include "tests/support/desktop_test.h"
#include "tests/support/editing.h"
#include "tests/support/tool_movies.h"

#include <QFile>
#include <QTest>

#include <unistd.h>

namespace {

constexpr int kFiles = 20;
constexpr int kRows = 5; // of the page's table that are visible
constexpr qint64 kBytes = 100000000;

// The number of packets of each track, or an error.
QList<int> Packets(const QString& path)
{
    const Outcome outcome = RunProgram("ffprobe",
                                       {"-v", "error", "-count_packets", "-show_entries",
                                        "stream=nb_read_packets", "-of", "csv=p=0", path},
                                       {}, 300000);
    QList<int> counts;
    for (const QByteArray& line : outcome.output.simplified().split(' ')) {
        counts << line.toInt();
    }
    return counts;
}

} // namespace

class LongMergeTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void mergeBehindASlowDiskIsWholeInTheEnd();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    static void MakeSources(const QString& folder);
    void Merge(Recorder& recorder, const QString& target);
};

// Of the same content, which is on the disk once.
void LongMergeTest::MakeSources(const QString& folder)
{
    QVERIFY(QDir().mkpath(folder));
    const QString piece = folder + "/piece";
    const QByteArray problem = MakeMovie(
        {"-f",      "lavfi",     "-i",       "testsrc2=size=1280x720:rate=30,noise=alls=20:allf=t",
         "-f",      "lavfi",     "-i",       "sine=frequency=440:sample_rate=44100",
         "-t",      "8",         "-c:v",     "libx264",
         "-preset", "ultrafast", "-crf",     "34",
         "-g",      "59",        "-pix_fmt", "yuv420p",
         "-c:a",    "aac",       "-f",       "mp4",
         piece});
    QVERIFY2(problem.isEmpty(), problem);
    const QString first = folder + "/0.mp4";
    const Outcome loop = RunProgram("ffmpeg", {"-stream_loop", "1000", "-i", piece, "-c", "copy",
                                               "-fs", QString::number(kBytes), first});
    QVERIFY2(loop.code == 0, loop.error);
    QVERIFY(QFile::remove(piece));
    for (int i = 1; i < kRows; ++i) {
        const QString name = folder + QString("/%1.mp4").arg(i);
        QCOMPARE(link(QFile::encodeName(first), QFile::encodeName(name)), 0);
    }
}

void LongMergeTest::Merge(Recorder& recorder, const QString& target)
{
    QVERIFY2(recorder.OpenPage("merge"), "the join page does not appear");
    for (int i = 0; i < kFiles; ++i) {
        recorder.ClickRow("merge.source", i % kRows);
        recorder.Click("merge.add");
    }
    recorder.Click("merge.merge");
    QVERIFY2(recorder.ChooseFolder(target), "no folder could be chosen");
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }, 600000), "no message");
    QVERIFY2(recorder.CloseMessage(), "the message cannot be closed");
}

void LongMergeTest::mergeBehindASlowDiskIsWholeInTheEnd()
{
    QVERIFY2(QFile::exists(SLOW_DISK_PRELOAD), "the library that slows the disk is missing");
    Recorder recorder(m_desktop);
    MakeSources(recorder.SaveDirectory());
    const QString target = QDir::cleanPath(recorder.SaveDirectory() + "/../merged");
    QVERIFY(QDir().mkpath(target));
    recorder.SetEnvironment("LD_PRELOAD", SLOW_DISK_PRELOAD);
    QVERIFY(recorder.Start());
    Merge(recorder, target);
    QVERIFY2(FileNames(target).join(' ').contains(".part"), "the disk was not slow");
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    QCOMPARE(recorder.WaitForEnd(), 0);

    const auto isWhole = [&] {
        const QStringList files = FileNames(target);
        return files.size() == 1 && files[0].endsWith(".mp4");
    };
    QVERIFY2(WaitUntil(isWhole, 600000), qPrintable("there is " + FileNames(target).join(' ')));
    const QString merged = target + '/' + FileNames(target).first();
    const QList<int> one = Packets(recorder.SaveDirectory() + "/0.mp4");
    const QList<int> all = Packets(merged);
    QCOMPARE(one.size(), 2);
    QCOMPARE(all.size(), 2);
    QCOMPARE(all[0], kFiles * one[0]);
    // A packet of sound may be left out where two parts meet.
    QVERIFY2(all[1] <= kFiles * one[1] && all[1] >= kFiles * (one[1] - 2),
             qPrintable(QString("%1 packets of sound, not %2").arg(all[1]).arg(kFiles * one[1])));
}

QTEST_GUILESS_MAIN(LongMergeTest)
#include "long_merge_test.moc"
