// Measures trims and the list of videos through the window, against ffmpeg with the same arguments.
// Only the platform plugin is not real: the window is offscreen.
#include "bench/editing_measurements.h"

#include <QTableWidget>

class EditingBench : public EditingMeasurements
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cut();
    void cutFromTheMiddle();
    void listOfTwoHundred();

private:
    static constexpr int kCutRounds = 15; // many, because a cut is short

    // Cuts the folder's movie between these seconds, alternating between the window and ffmpeg.
    void MeasureCut(const QString& name, const QString& folder, int start, int end) const;
};

void EditingBench::initTestCase()
{
    InstallRealTool();
}

void EditingBench::MeasureCut(const QString& name, const QString& folder, int start, int end) const
{
    const QString target = Path("cut to");
    QVERIFY(QDir().mkpath(target));
    const auto window = Window(folder, "btnMontageSlot");
    ClickRow(*window, "m_pCutVideoTable", 0);
    for (const auto& [position, slot] : {std::pair(start, "btnSetHead"), {end, "btnSetTail"}}) {
        QVERIFY(QMetaObject::invokeMethod(window.get(), "current", Q_ARG(int, position)));
        Call(*window, slot);
    }
    ModalBoxes boxes;
    boxes.directory = target;
    QList<double> ours;
    QList<double> shell;
    for (int i = 0; i < kCutRounds; ++i) {
        Call(*window, "btnSlotLayout3Cut");
        ours << static_cast<double>(boxes.jobNsecs) / 1e9;
        QVERIFY2(boxes.texts.takeLast().startsWith("Cut success"), "the cut failed");
        Empty(target);
        shell << Seconds([&] {
            QVERIFY(FfmpegToDisk({"-i", folder + "/000.mp4", "-ss", QString::number(start), "-t",
                                  QString::number(end - start), "-codec", "copy",
                                  target + "/shell.mp4"}));
        });
        Empty(target);
    }
    const double ratio = Least(ours) / Least(shell);
    Row(name, Number(ratio), "<= 1.02", ratio <= 1.02);
    Row("  of " + Number(Mebibytes(folder + "/000.mp4"), 0) + " MiB",
        Number(Least(ours)) + " s, " + Number(Least(shell)) + " s");
}

// From the start of the movie. Anywhere else ffmpeg alone would write less, because it drops the
// picture up to the next sync sample, and read more, because it reads from the beginning.
void EditingBench::cut()
{
    // Large for its length, so that the work outweighs the start of a program.
    const QStringList source = Source("testsrc2=size=1280x720:rate=30,noise=alls=40:allf=t");
    QVERIFY(Ffmpeg(source + QStringList{"-t", "8", "-crf", "14", Path("piece.mp4")}));
    QVERIFY(
        Ffmpeg({"-stream_loop", "3", "-i", Path("piece.mp4"), "-c", "copy", Path("large.mp4")}));
    const QString folder = Folder("cut", "large.mp4", 1);
    MeasureCut("Cut of 28 s through the window / ffmpeg", folder, 0, 28);
}

// A common case: ten minutes from the middle of a recording of half an hour.
void EditingBench::cutFromTheMiddle()
{
    QVERIFY(Ffmpeg(Source("testsrc2=size=1280x720:rate=30") +
                   QStringList{"-t", "20", "-crf", "30", Path("twenty.mp4")}));
    QVERIFY(
        Ffmpeg({"-stream_loop", "89", "-i", Path("twenty.mp4"), "-c", "copy", Path("long.mp4")}));
    const QString folder = Folder("long cut", "long.mp4", 1);
    MeasureCut("Cut of 10 min from the middle of 30 / ffmpeg", folder, 600, 1200);
}

void EditingBench::listOfTwoHundred()
{
    constexpr int files = 200;
    QVERIFY(Ffmpeg(Source("testsrc2=size=1280x720:rate=30") +
                   QStringList{"-t", "1", Path("short.mp4")}));
    const QString folder = Folder("list", "short.mp4", files);
    const auto window = Window(folder, "btnSlotBack");
    const double ours = Seconds([&] { Call(*window, "btnEditSlot"); });
    QCOMPARE(window->findChild<QTableWidget*>("m_pSourceVideoTable")->rowCount(), files);
    const double shell = Seconds([&] {
        for (int i = 0; i < files; ++i) {
            Ffmpeg({"-i", folder + QString("/%1.mp4").arg(i, 3, 10, QChar('0'))});
        }
    });
    Row("Merge page on 200 videos / 200 runs of ffmpeg -i", Number(ours / shell), "<= 0.1",
        ours / shell <= 0.1);
    Row("  seconds", Number(ours) + " s, " + Number(shell) + " s");
}

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    EditingBench bench;
    return RunMeasurements(bench, QCoreApplication::arguments().mid(1)); // only the named rows
}

#include "editing_bench.moc"
