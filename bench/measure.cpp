#include "bench/measure.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <poll.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace {

QByteArray ReadProc(qint64 pid, const QString& name)
{
    QFile file(QString("/proc/%1/%2").arg(pid).arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Tells when a window of a program's size is mapped. The window manager puts every window into one
// of its own, whose mapping the root window tells of.
class MapWatcher
{
public:
    MapWatcher() : m_pConnection(xcb_connect(nullptr, nullptr))
    {
        const uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        const uint32_t root = xcb_setup_roots_iterator(xcb_get_setup(m_pConnection)).data->root;
        xcb_change_window_attributes(m_pConnection, root, XCB_CW_EVENT_MASK, &events);
        std::free(xcb_get_input_focus_reply( // NOLINT(cppcoreguidelines-no-malloc): xcb's way
            m_pConnection, xcb_get_input_focus(m_pConnection), nullptr));
    }
    MapWatcher(const MapWatcher&) = delete;
    MapWatcher& operator=(const MapWatcher&) = delete;
    ~MapWatcher() { xcb_disconnect(m_pConnection); }

    // False after ten seconds without one.
    bool Wait()
    {
        QElapsedTimer time;
        time.start();
        while (!time.hasExpired(10000)) {
            while (xcb_generic_event_t* event = xcb_poll_for_event(m_pConnection)) {
                const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> owner(event,
                                                                                       &std::free);
                if ((event->response_type & 0x7fU) == XCB_MAP_NOTIFY &&
                    IsBig(reinterpret_cast<xcb_map_notify_event_t*>(event)
                              ->window)) { // NOLINT: xcb's way
                    return true;
                }
            }
            pollfd ready{xcb_get_file_descriptor(m_pConnection), POLLIN, 0};
            poll(&ready, 1, 100);
        }
        return false;
    }

private:
    bool IsBig(xcb_window_t window)
    {
        xcb_get_geometry_reply_t* geometry =
            xcb_get_geometry_reply(m_pConnection, xcb_get_geometry(m_pConnection, window), nullptr);
        const bool big = geometry != nullptr && geometry->width >= 1000;
        std::free(geometry); // NOLINT(cppcoreguidelines-no-malloc): xcb's way
        return big;
    }

    xcb_connection_t* m_pConnection;
};

} // namespace

double StartTime(const QString& program, const QStringList& arguments, const QString& folder)
{
    MapWatcher watcher;
    QProcess process;
    process.setWorkingDirectory(folder);
    QElapsedTimer time;
    time.start();
    process.start(program, arguments);
    const bool shown = watcher.Wait();
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

double CpuSeconds(const QList<qint64>& pids)
{
    double ticks = 0;
    for (const qint64 pid : pids) {
        const QByteArray stat = ReadProc(pid, "stat");
        // The name, in parentheses, may hold blanks. Fields 14 to 17 are the times.
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        for (int i = 11; i <= 14; ++i) {
            ticks += fields.value(i).toDouble();
        }
    }
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
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

QStringList CommandLine(qint64 pid)
{
    QStringList words;
    for (const QByteArray& word : ReadProc(pid, "cmdline").split('\0')) {
        words << QString::fromUtf8(word);
    }
    words.removeLast(); // a zero byte ends the last one too
    return words;
}

double Median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? -1 : values[values.size() / 2];
}
