// Measures cuts, merges and the list of videos through the window, against ffmpeg with the same
// arguments. Only the platform plugin is not real: the window is offscreen.
#include "bench/table.h"
#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTableWidget>

#include <algorithm>
#include <functional>
#include <unistd.h>

class EditingBench : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cut();
    void cutFromTheMiddle();
    void merge();
    void listOfTwoHundred();

private:
    static constexpr int kRounds = 7;
    static constexpr int kCutRounds = 15; // many, because a cut is short

    // Deletes what a job wrote, so that every round writes a new file.
    static void Empty(const QString& folder);
    // ffmpeg's arguments for a movie with this picture and a tone, encoded like a recording.
    static QStringList Source(const QString& picture);
    // Runs ffmpeg and waits for it. Returns false if it fails.
    static bool Ffmpeg(const QStringList& arguments);
    // The shortest of several rounds, which other work and the disk disturbed least.
    static double Least(const QList<double>& seconds)
    {
        return *std::min_element(seconds.begin(), seconds.end());
    }
    // The seconds `work` takes.
    static double Seconds(const std::function<void()>& work);
    // Cuts the folder's movie between these seconds, alternating between the window and ffmpeg.
    void MeasureCut(const QString& name, const QString& folder, int start, int end) const;
    // A new folder with `copies` copies of this movie.
    QString Folder(const QString& name, const QString& movie, int copies);
    std::unique_ptr<DRUI> Window(const QString& folder, const char* pageSlot) const;
    static void Call(DRUI& window, const char* slot)
    {
        QVERIFY(QMetaObject::invokeMethod(&window, slot));
    }
    static void ClickRow(DRUI& window, const char* table, int row);

    QTemporaryDir m_folder;
};

bool EditingBench::Ffmpeg(const QStringList& arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start("ffmpeg", QStringList{"-y"} + arguments);
    return process.waitForFinished(300000) && process.exitCode() == 0;
}

void EditingBench::Empty(const QString& folder)
{
    for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files)) {
        QFile::remove(file.filePath());
    }
    sync();
}

double EditingBench::Seconds(const std::function<void()>& work)
{
    QElapsedTimer time;
    time.start();
    work();
    return static_cast<double>(time.nsecsElapsed()) / 1e9;
}

QStringList EditingBench::Source(const QString& picture)
{
    return {"-f",      "lavfi",     "-i",       picture,
            "-f",      "lavfi",     "-i",       "sine=frequency=440:sample_rate=44100",
            "-c:v",    "libx264",   "-g",       "59",
            "-preset", "ultrafast", "-pix_fmt", "yuv420p",
            "-c:a",    "aac"};
}

// Makes two movies: a large one, so that the work outweighs the start of a program, and a short
// one.
void EditingBench::initTestCase()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QFile::remove(BesideProgram("tool"));
    QVERIFY(QFile::copy(TOOL, BesideProgram("tool")));
    const QStringList source = Source("testsrc2=size=1280x720:rate=30,noise=alls=40:allf=t");
    QVERIFY(Ffmpeg(source + QStringList{"-t", "8", "-crf", "14", m_folder.filePath("piece.mp4")}));
    QVERIFY(Ffmpeg({"-stream_loop", "3", "-i", m_folder.filePath("piece.mp4"), "-c", "copy",
                    m_folder.filePath("large.mp4")}));
    QVERIFY(Ffmpeg(source + QStringList{"-t", "1", m_folder.filePath("short.mp4")}));
}

QString EditingBench::Folder(const QString& name, const QString& movie, int copies)
{
    QString folder = m_folder.filePath(name);
    QDir().mkpath(folder);
    for (int i = 0; i < copies; ++i) {
        QFile::copy(m_folder.filePath(movie),
                    folder + QString("/%1.mp4").arg(i, 3, 10, QChar('0')));
    }
    return folder;
}

std::unique_ptr<DRUI> EditingBench::Window(const QString& folder, const char* pageSlot) const
{
    WriteFile(BesideProgram("ScreenRecord.ini"),
              "[screen_record]\nsave_path=" + folder.toUtf8() + '\n');
    auto window = std::make_unique<DRUI>();
    window->Init();
    window->show();
    Call(*window, pageSlot);
    return window;
}

void EditingBench::ClickRow(DRUI& window, const char* table, int row)
{
    auto* widget = window.findChild<QTableWidget*>(table);
    QTest::mouseClick(widget->viewport(), Qt::LeftButton, {},
                      widget->visualItemRect(widget->item(row, 0)).center());
}

void EditingBench::MeasureCut(const QString& name, const QString& folder, int start, int end) const
{
    const QString target = m_folder.filePath("cut to");
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
            QVERIFY(
                Ffmpeg({"-i", folder + "/000.mp4", "-ss", QString::number(start), "-t",
                        QString::number(end - start), "-codec", "copy", target + "/shell.mp4"}));
        });
        Empty(target);
    }
    const double ratio = Least(ours) / Least(shell);
    Row(name, Number(ratio), "<= 1.02", ratio <= 1.02);
    const double size = static_cast<double>(QFileInfo(folder + "/000.mp4").size()) / (1 << 20);
    Row("  of " + Number(size, 0) + " MiB",
        Number(Least(ours)) + " s, " + Number(Least(shell)) + " s");
}

// From the start of the movie. Anywhere else ffmpeg alone would write less, because it drops the
// picture up to the next sync sample, and read more, because it reads from the beginning.
void EditingBench::cut()
{
    const QString folder = Folder("cut", "large.mp4", 1);
    MeasureCut("Cut of 28 s through the window / ffmpeg", folder, 0, 28);
}

// A common case: ten minutes from the middle of a recording of half an hour.
void EditingBench::cutFromTheMiddle()
{
    QVERIFY(Ffmpeg(Source("testsrc2=size=1280x720:rate=30") +
                   QStringList{"-t", "20", "-crf", "30", m_folder.filePath("twenty.mp4")}));
    QVERIFY(Ffmpeg({"-stream_loop", "89", "-i", m_folder.filePath("twenty.mp4"), "-c", "copy",
                    m_folder.filePath("long.mp4")}));
    const QString folder = Folder("long cut", "long.mp4", 1);
    MeasureCut("Cut of 10 min from the middle of 30 / ffmpeg", folder, 600, 1200);
}

void EditingBench::merge()
{
    constexpr int parts = 5;
    const QString folder = Folder("merge", "piece.mp4", parts);
    const QString target = m_folder.filePath("merge to");
    QVERIFY(QDir().mkpath(target));
    const auto window = Window(folder, "btnEditSlot");
    for (int row = 0; row < parts; ++row) {
        ClickRow(*window, "m_pSourceVideoTable", row);
        Call(*window, "btnAddSlot");
    }
    ModalBoxes boxes;
    boxes.directory = target;
    QList<double> ours;
    QList<double> shell;
    for (int i = 0; i < kRounds; ++i) {
        Call(*window, "btnSlotLayout4Merge");
        ours << static_cast<double>(boxes.jobNsecs) / 1e9;
        QVERIFY2(boxes.texts.takeLast().startsWith("Merge success"), "the merge failed");
        Empty(target);
        shell << Seconds([&] {
            QString list;
            for (int part = 0; part < parts; ++part) {
                const QString stream = target + QString("/%1.ts").arg(part);
                QVERIFY(Ffmpeg({"-i", folder + QString("/00%1.mp4").arg(part), "-vcodec", "copy",
                                "-acodec", "copy", "-bsf:v", "h264_mp4toannexb", stream}));
                list += stream + '|';
            }
            QVERIFY(Ffmpeg({"-i", "concat:" + list, "-acodec", "copy", "-vcodec", "copy", "-bsf:a",
                            "aac_adtstoasc", target + "/shell.mp4"}));
            for (const QString& stream : list.split('|', Qt::SkipEmptyParts)) {
                QVERIFY(QFile::remove(stream));
            }
        });
        Empty(target);
    }
    const double ratio = Least(ours) / Least(shell);
    Row("Merge of 5 files through the window / ffmpeg", Number(ratio), "<= 1.02", ratio <= 1.02);
    Row("  seconds", Number(Least(ours)) + " s, " + Number(Least(shell)) + " s");
}

void EditingBench::listOfTwoHundred()
{
    constexpr int files = 200;
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
