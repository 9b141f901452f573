#include "tests/support/measure.h"

#include "tests/support/desktop.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <unistd.h>
#include <xcb/xcb.h>

namespace {

QByteArray ReadProc(qint64 pid, const QString& name)
{
    QFile file(QString("/proc/%1/%2").arg(pid).arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Watches one pixel a little below the middle of the screen, where the windows appear.
class Eye
{
public:
    Eye() : m_pConnection(xcb_connect(nullptr, nullptr))
    {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_pConnection)).data;
        m_root = screen->root;
        m_x = static_cast<int16_t>(screen->width_in_pixels / 2);
        m_y = static_cast<int16_t>(screen->height_in_pixels * 3 / 4);
    }
    Eye(const Eye&) = delete;
    Eye& operator=(const Eye&) = delete;
    ~Eye() { xcb_disconnect(m_pConnection); }

    // Waits until the pixel is lit (or black again). Returns false after ten seconds.
    bool WaitUntilLit(bool lit)
    {
        QElapsedTimer time;
        time.start();
        while (!time.hasExpired(10000)) {
            if (IsLit() == lit) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(300));
        }
        return false;
    }

private:
    bool IsLit()
    {
        const auto cookie = xcb_get_image(m_pConnection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, m_x,
                                          m_y, 1, 1, 0xffffffU);
        xcb_get_image_reply_t* image = xcb_get_image_reply(m_pConnection, cookie, nullptr);
        bool lit = false;
        if (image != nullptr && xcb_get_image_data_length(image) >= 4) {
            const uint8_t* pixel = xcb_get_image_data(image);
            lit = pixel[0] != 0 || pixel[1] != 0 || pixel[2] != 0;
        }
        std::free(image); // NOLINT(cppcoreguidelines-no-malloc): xcb's way
        return lit;
    }

    xcb_connection_t* m_pConnection;
    xcb_window_t m_root = 0;
    int16_t m_x = 0;
    int16_t m_y = 0;
};

} // namespace

double StartTime(const QString& program, const QStringList& arguments, const QString& folder)
{
    Eye eye;
    if (!eye.WaitUntilLit(false)) {
        return -1;
    }
    QProcess process;
    process.setWorkingDirectory(folder);
    QElapsedTimer time;
    time.start();
    process.start(program, arguments);
    const bool shown = eye.WaitUntilLit(true);
    const double milliseconds = static_cast<double>(time.nsecsElapsed()) / 1e6;
    process.terminate();
    process.waitForFinished();
    return shown ? milliseconds : -1;
}

Memory MemoryOf(qint64 pid)
{
    Memory memory;
    for (const QByteArray& line : ReadProc(pid, "smaps_rollup").split('\n')) {
        const double mebibytes = line.simplified().split(' ').value(1).toDouble() / 1024;
        if (line.startsWith("Rss:")) {
            memory.rss = mebibytes;
        } else if (line.startsWith("Pss:")) {
            memory.pss = mebibytes;
        }
    }
    return memory;
}

double Holding::Growth() const
{
    return memory.isEmpty() ? 0 : *std::max_element(memory.begin(), memory.end()) - memory[0];
}

QMap<qint64, Holding> HoldingsOf(const QList<qint64>& pids)
{
    QMap<qint64, Holding> processes;
    for (const qint64 pid : pids) {
        processes[pid].name = CommandLine(pid).value(0).section('/', -1);
    }
    return processes;
}

void Look(QMap<qint64, Holding>& processes)
{
    for (auto process = processes.begin(); process != processes.end(); ++process) {
        process->memory << MemoryOf(process.key()).rss;
    }
}

double CpuSeconds(const QList<qint64>& pids)
{
    double ticks = 0;
    for (const qint64 pid : pids) {
        const QByteArray stat = ReadProc(pid, "stat");
        // The name, in parentheses, may contain blanks. Fields 14 to 17 are the times.
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        for (int i = 11; i <= 14; ++i) {
            ticks += fields.value(i).toDouble();
        }
    }
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

QMap<qint64, double> WaitSeconds(const QList<qint64>& pids)
{
    QMap<qint64, double> seconds;
    for (const qint64 pid : pids) {
        seconds[pid] = ReadProc(pid, "schedstat").split(' ').value(1).toDouble() / 1e9;
    }
    return seconds;
}

QList<qint64> Descendants(qint64 pid)
{
    QList<qint64> all;
    for (const QString& thread : QDir(QString("/proc/%1/task").arg(pid)).entryList({"[0-9]*"})) {
        for (const QByteArray& child :
             ReadProc(pid, "task/" + thread + "/children").simplified().split(' ')) {
            if (!child.isEmpty()) {
                all << child.toLongLong();
                all << Descendants(child.toLongLong());
            }
        }
    }
    return all;
}

QList<qint64> ProcessesOf(const QString& program)
{
    QList<qint64> found;
    for (const QString& pid : QDir("/proc").entryList({"[0-9]*"}, QDir::Dirs)) {
        if (QFile::symLinkTarget("/proc/" + pid + "/exe") == program) {
            found << pid.toLongLong();
        }
    }
    return found;
}

QStringList CommandLine(qint64 pid)
{
    QStringList words;
    for (const QByteArray& word : ReadProc(pid, "cmdline").split('\0')) {
        words << QString::fromUtf8(word);
    }
    words.removeLast(); // the last argument ends with a zero byte too
    return words;
}

double Median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? -1 : values[values.size() / 2];
}

void WaitFor(int milliseconds)
{
    QElapsedTimer time;
    time.start();
    WaitUntil([&] { return time.hasExpired(milliseconds); }, 2 * milliseconds + 1000);
}
