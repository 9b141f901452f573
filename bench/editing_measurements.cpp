#include "bench/editing_measurements.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTableWidget>

#include <algorithm>
#include <unistd.h>

void EditingMeasurements::InstallRealTool()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QFile::remove(BesideProgram("tool"));
    QVERIFY(QFile::copy(TOOL, BesideProgram("tool")));
}

QStringList EditingMeasurements::Source(const QString& picture)
{
    return {"-f",      "lavfi",     "-i",       picture,
            "-f",      "lavfi",     "-i",       "sine=frequency=440:sample_rate=44100",
            "-c:v",    "libx264",   "-g",       "59",
            "-preset", "ultrafast", "-pix_fmt", "yuv420p",
            "-c:a",    "aac"};
}

bool EditingMeasurements::Ffmpeg(const QStringList& arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start("ffmpeg", QStringList{"-y"} + arguments);
    return process.waitForFinished(300000) && process.exitCode() == 0;
}

bool EditingMeasurements::FfmpegToDisk(const QStringList& arguments)
{
    QFile result(arguments.last());
    return Ffmpeg(arguments) && result.open(QIODevice::ReadWrite) && fsync(result.handle()) == 0;
}

void EditingMeasurements::Empty(const QString& folder)
{
    for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files)) {
        QFile::remove(file.filePath());
    }
    sync();
}

double EditingMeasurements::Seconds(const std::function<void()>& work)
{
    QElapsedTimer time;
    time.start();
    work();
    return static_cast<double>(time.nsecsElapsed()) / 1e9;
}

double EditingMeasurements::Least(const QList<double>& seconds)
{
    return *std::min_element(seconds.begin(), seconds.end());
}

double EditingMeasurements::Mebibytes(const QString& path)
{
    return static_cast<double>(QFileInfo(path).size()) / (1 << 20);
}

QString EditingMeasurements::Folder(const QString& name, const QString& movie, int copies) const
{
    QString folder = Path(name);
    QDir().mkpath(folder);
    for (int i = 0; i < copies; ++i) {
        QFile::copy(Path(movie), folder + QString("/%1.mp4").arg(i, 3, 10, QChar('0')));
    }
    return folder;
}

std::unique_ptr<DRUI> EditingMeasurements::Window(const QString& folder, const char* pageSlot) const
{
    WriteFile(BesideProgram("ScreenRecord.ini"),
              "[screen_record]\nsave_path=" + folder.toUtf8() + '\n');
    auto window = std::make_unique<DRUI>();
    window->Init();
    window->show();
    Call(*window, pageSlot);
    return window;
}

void EditingMeasurements::Call(DRUI& window, const char* slot)
{
    QVERIFY(QMetaObject::invokeMethod(&window, slot));
}

void EditingMeasurements::ClickRow(DRUI& window, const char* table, int row)
{
    auto* widget = window.findChild<QTableWidget*>(table);
    QTest::mouseClick(widget->viewport(), Qt::LeftButton, {},
                      widget->visualItemRect(widget->item(row, 0)).center());
}
