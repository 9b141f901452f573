// Measures merges through the window, against ffmpeg doing the same in two steps and in one. Only
// the platform plugin is not real: the window is offscreen.
#include "bench/disk_watch.h"
#include "bench/editing_measurements.h"

#include <array>

class JoiningBench : public EditingMeasurements
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void joins();

private:
    static constexpr int kParts = 5;
    static constexpr int kRounds = 6;

    // The movies in the folder, as transport streams first.
    static bool InTwoSteps(const QString& folder, const QString& target);
    // By ffmpeg's concat demuxer.
    static bool InOneStep(const QString& folder, const QString& target);
};

namespace {

QString Part(const QString& folder, int number)
{
    return folder + QString("/%1.mp4").arg(number, 3, 10, QChar('0'));
}

} // namespace

void JoiningBench::initTestCase()
{
    InstallRealTool();
    // As a recording of some minutes.
    const QStringList source = Source("testsrc2=size=1280x720:rate=30,noise=alls=20:allf=t");
    QVERIFY(Ffmpeg(source + QStringList{"-t", "8", "-crf", "34", Path("piece.mp4")}));
    QVERIFY(Ffmpeg({"-stream_loop", "100", "-i", Path("piece.mp4"), "-c", "copy", "-fs",
                    QString::number(110 << 20), Path("part.mp4")}));
}

bool JoiningBench::InTwoSteps(const QString& folder, const QString& target)
{
    QString streams;
    for (int part = 0; part < kParts; ++part) {
        const QString stream = target + QString("/%1.ts").arg(part + 1);
        if (!Ffmpeg({"-i", Part(folder, part), "-vcodec", "copy", "-acodec", "copy", "-bsf:v",
                     "h264_mp4toannexb", stream})) {
            return false;
        }
        streams += stream + '|';
    }
    const bool joined = Ffmpeg({"-i", "concat:" + streams, "-acodec", "copy", "-vcodec", "copy",
                                "-bsf:a", "aac_adtstoasc", target + "/two steps.mp4"});
    for (const QString& stream : streams.split('|', Qt::SkipEmptyParts)) {
        QFile::remove(stream);
    }
    return joined;
}

bool JoiningBench::InOneStep(const QString& folder, const QString& target)
{
    const QString list = target + "/list";
    QByteArray parts;
    for (int part = 0; part < kParts; ++part) {
        parts += "file '" + Part(folder, part).toUtf8() + "'\n";
    }
    WriteFile(list, parts);
    return Ffmpeg(
        {"-f", "concat", "-safe", "0", "-i", list, "-c", "copy", target + "/one step.mp4"});
}

void JoiningBench::joins()
{
    const QString folder = Folder("parts", "part.mp4", kParts);
    const QString target = Path("merge to");
    QVERIFY(QDir().mkpath(target));
    const auto window = Window(folder, "btnEditSlot");
    for (int row = 0; row < kParts; ++row) {
        ClickRow(*window, "m_pSourceVideoTable", row);
        Call(*window, "btnAddSlot");
    }
    ModalBoxes boxes;
    boxes.directory = target;
    QList<double> ours;
    QList<double> twoSteps;
    QList<double> oneStep;
    qint64 needed = 0;
    const std::array<std::function<void()>, 3> ways = {
        [&] {
            const DiskWatch disk(target);
            Call(*window, "btnSlotLayout4Merge");
            needed = qMax(needed, disk.NeededBeyondTheRest());
            ours << static_cast<double>(boxes.jobNsecs) / 1e9;
            QVERIFY2(boxes.texts.takeLast().startsWith("Merge success"), "the merge failed");
        },
        [&] { twoSteps << Seconds([&] { QVERIFY(InTwoSteps(folder, target)); }); },
        [&] { oneStep << Seconds([&] { QVERIFY(InOneStep(folder, target)); }); }};
    // Each comes behind each, because what ran before is felt in the memory and on the disk.
    for (size_t i = 0; i < kRounds * ways.size(); ++i) {
        ways.at((i + i / ways.size()) % ways.size())();
        Empty(target);
    }
    QVERIFY2(ours.size() == kRounds && twoSteps.size() == kRounds && oneStep.size() == kRounds,
             "a merge failed");
    const double two = Least(ours) / Least(twoSteps);
    const double one = Least(ours) / Least(oneStep);
    Row("Merge of 5 files through the window / ffmpeg in two steps", Number(two), "<= 0.6",
        two <= 0.6);
    Row("Merge of 5 files through the window / ffmpeg's concat", Number(one), "<= 1.15",
        one <= 1.15);
    Row("  of " + Number(Mebibytes(Part(folder, 0)), 0) + " MiB each",
        Number(Least(ours)) + " s, " + Number(Least(twoSteps)) + " s, " + Number(Least(oneStep)) +
            " s");
    const double mebibytes = static_cast<double>(needed) / (1 << 20);
    Row("Disk needed during the merge beyond its result", Number(mebibytes, 1) + " MiB", "<= 1 MiB",
        mebibytes <= 1);
}

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    JoiningBench bench;
    return RunMeasurements(bench, QCoreApplication::arguments().mid(1)); // only the named rows
}

#include "joining_bench.moc"
