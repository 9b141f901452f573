// The keeper, and the order in which it flushes data to disk. A process forked by the test acts as
// ffmpeg.
#include "tests/support/child_processes.h"
#include "tests/support/ordinary_movie.h"
#include "tests/support/tool_movies.h"
#include "tool/mp4/settle.h"
#include "tool/record/end_signal.h"
#include "tool/record/keeper.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Shared by all processes of a test.
struct Shared
{
    std::atomic<ino_t> folder = 0; // the last folder flushed to disk
    std::atomic<off_t> size = 0;   // size of the last file flushed to disk
    std::atomic<int> terminated = 0;
    std::atomic<bool> isReady = false;
};

Shared* g_shared = nullptr;

// The content of this file at each flush.
QString g_watched;
QList<QByteArray> g_contents;
bool g_diskFails = false;

void Note(int file)
{
    struct stat status = {};
    fstat(file, &status);
    if (S_ISDIR(status.st_mode)) {
        g_shared->folder = status.st_ino;
    } else {
        g_shared->size = status.st_size;
    }
    if (!g_watched.isEmpty()) {
        g_contents << Content(g_watched);
    }
}

} // namespace

// Replaces the system's function.
extern "C" int fsync(int file)
{
    Note(file);
    return static_cast<int>(syscall(SYS_fsync, file));
}

extern "C" int fdatasync(int file)
{
    Note(file);
    return g_diskFails ? -1 : static_cast<int>(syscall(SYS_fdatasync, file));
}

class ToolKeeperTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void fileIsSettledWhenFfmpegHasEnded();
    void movedFileIsSettledWhereItLies();
    void diskHasTheFileAndItsName();
    void fileThatFfmpegDoesNotWriteIsLeftAlone();
    void hangUpTerminatesFfmpegOnce_data();
    void hangUpTerminatesFfmpegOnce();
    void diskHasTheIndexBeforeItIsUsed();
    void diskThatFailsLeavesTheMovieAsItWas();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_folder->filePath(name); }
    void StartFfmpeg(const QString& named, const QString& written, bool watchesSignals = false);
    void EndFfmpeg();
    int Sleeps() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_pieces; // a recording as ffmpeg leaves it
    pid_t m_ffmpeg = 0;
};

void ToolKeeperTest::initTestCase()
{
    g_shared = MakeShared<Shared>();
    QVERIFY(g_shared != nullptr);
    // Orphans become children of this process, which can then wait for them.
    QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    const QTemporaryDir folder;
    const QString path = folder.filePath("pieces.mp4");
    const QByteArray problem = MakeMovie(
        PictureInput(3) + ToneInput(3) + PlainCodecs() +
        QStringList{"-g", "25", "-movflags", "+frag_keyframe+delay_moov+default_base_moof", path});
    QVERIFY2(problem.isEmpty(), problem);
    QVERIFY(!IsOrdinary(path));
    m_pieces = Content(path);
}

void ToolKeeperTest::init()
{
    new (g_shared) Shared;
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_ffmpeg = 0;
}

void ToolKeeperTest::cleanup()
{
    if (m_ffmpeg > 0) {
        kill(m_ffmpeg, SIGKILL);
    }
    QVERIFY2(AllChildrenEnd(), "the keeper goes on");
    g_watched.clear();
    g_contents.clear();
    g_diskFails = false;
}

// "ffmpeg" opens the file `written` and goes on. The keeper gets the name `named`.
void ToolKeeperTest::StartFfmpeg(const QString& named, const QString& written, bool watchesSignals)
{
    QVERIFY(Write(written, m_pieces));
    m_ffmpeg = fork();
    if (m_ffmpeg == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::signal(SIGTERM, [](int) { ++g_shared->terminated; });
        std::signal(SIGHUP, SIG_DFL);
        tool::StartKeeper(QFile::encodeName(named).toStdString(), watchesSignals);
        tool::KeepEndSignals();
        // ffmpeg has other files open too, before and after this one.
        const int other = open("/proc/self/exe", O_RDONLY);
        const int file = open(QFile::encodeName(written), O_RDWR);
        g_shared->isReady = other >= 0 && file >= 0;
        while (true) {
            pause();
        }
    }
    QVERIFY(m_ffmpeg > 0);
    QTRY_VERIFY2(g_shared->isReady, "the file cannot be opened");
}

void ToolKeeperTest::EndFfmpeg()
{
    QCOMPARE(kill(m_ffmpeg, SIGKILL), 0);
    m_ffmpeg = 0;
    QVERIFY2(AllChildrenEnd(), "the keeper goes on");
}

// How often the keeper has gone to sleep, which it does between two checks.
int ToolKeeperTest::Sleeps() const
{
    const pid_t keeper = ChildrenOf(m_ffmpeg).value(0);
    const QByteArray status = Content(QString("/proc/%1/status").arg(keeper));
    const QByteArray label = "\nvoluntary_ctxt_switches:";
    const qsizetype at = status.indexOf(label) + label.size();
    return status.mid(at, status.indexOf('\n', at) - at).trimmed().toInt();
}

void ToolKeeperTest::fileIsSettledWhenFfmpegHasEnded()
{
    const QString path = Path("r.mp4");
    StartFfmpeg(path, path);
    QTRY_COMPARE(g_shared->size.load(), static_cast<off_t>(m_pieces.size()));
    QVERIFY2(Content(path) == m_pieces, "it was changed while ffmpeg writes");
    EndFfmpeg();
    QVERIFY2(IsOrdinary(path), "it is still in pieces");
    QCOMPARE(DecodingErrors(path), QByteArray());
}

void ToolKeeperTest::movedFileIsSettledWhereItLies()
{
    StartFfmpeg(Path("r.mp4"), Path("r.mp4"));
    QTRY_COMPARE(g_shared->size.load(), static_cast<off_t>(m_pieces.size()));
    QVERIFY(QFile::rename(Path("r.mp4"), Path("moved.mp4")));
    QVERIFY(Write(Path("r.mp4"), m_pieces)); // a file of somebody else
    EndFfmpeg();
    QVERIFY2(IsOrdinary(Path("moved.mp4")), "it is still in pieces");
    QVERIFY2(Content(Path("r.mp4")) == m_pieces, "another file was changed");
}

void ToolKeeperTest::diskHasTheFileAndItsName()
{
    const QString path = Path("r.mp4");
    StartFfmpeg(path, path);
    struct stat folder = {};
    QCOMPARE(stat(QFile::encodeName(m_folder->path()), &folder), 0);
    QTRY_VERIFY2(g_shared->folder == folder.st_ino, "a power cut would lose the file's name");
    QTRY_COMPARE(g_shared->size.load(), static_cast<off_t>(m_pieces.size()));
    QFile more(path);
    QVERIFY(more.open(QIODevice::Append) && more.write(QByteArray(5000, '\0')) == 5000);
    more.close();
    QTRY_COMPARE(g_shared->size.load(), static_cast<off_t>(m_pieces.size() + 5000));
}

// A recording of that name existed before, and ffmpeg was told not to overwrite it.
void ToolKeeperTest::fileThatFfmpegDoesNotWriteIsLeftAlone()
{
    QVERIFY(Write(Path("there.mp4"), m_pieces));
    StartFfmpeg(Path("there.mp4"), Path("another.mp4"));
    const int before = Sleeps();
    QTRY_VERIFY2(Sleeps() >= before + 5, "the keeper does not look");
    QCOMPARE(g_shared->size.load(), off_t{0});
    EndFfmpeg();
    for (const char* name : {"there.mp4", "another.mp4"}) {
        QVERIFY2(Content(Path(name)) == m_pieces, name);
    }
}

void ToolKeeperTest::hangUpTerminatesFfmpegOnce_data()
{
    QTest::addColumn<bool>("watches");
    QTest::addColumn<int>("times");
    QTest::newRow("without anybody who passes keys") << true << 1;
    QTest::newRow("where another process types q") << false << 0;
}

void ToolKeeperTest::hangUpTerminatesFfmpegOnce()
{
    QFETCH(bool, watches);
    QFETCH(int, times);
    const QString path = Path("r.mp4");
    StartFfmpeg(path, path, watches);
    QTRY_COMPARE(g_shared->size.load(), static_cast<off_t>(m_pieces.size()));
    QCOMPARE(kill(m_ffmpeg, SIGHUP), 0);
    if (times > 0) {
        QTRY_COMPARE(g_shared->terminated.load(), times);
    }
    // Two more checks of the file, and so of the signal.
    for (const int added : {1, 2}) {
        QFile more(path);
        QVERIFY(more.open(QIODevice::Append) && more.write("x") == 1);
        more.close();
        QTRY_COMPARE(g_shared->size.load(), static_cast<off_t>(m_pieces.size() + added));
    }
    QCOMPARE(g_shared->terminated.load(), times);
}

// In between the file is either one movie or the other, whenever the power fails.
void ToolKeeperTest::diskHasTheIndexBeforeItIsUsed()
{
    const QString path = Path("r.mp4");
    QVERIFY(Write(path, m_pieces));
    g_watched = path;
    QVERIFY(tool::SettleMovie(QFile::encodeName(path).toStdString()));
    const QByteArray settled = Content(path);
    QCOMPARE(g_contents.size(), 2);
    QVERIFY2(g_contents[0].startsWith(m_pieces),
             "the header is changed before the disk has the index");
    QVERIFY2(g_contents[0].mid(m_pieces.size()) == settled.mid(m_pieces.size()),
             "the index is not complete");
    QVERIFY2(g_contents[1] == settled && settled != g_contents[0],
             "the disk does not have the new header");
}

void ToolKeeperTest::diskThatFailsLeavesTheMovieAsItWas()
{
    const QString path = Path("r.mp4");
    QVERIFY(Write(path, m_pieces));
    g_diskFails = true;
    QVERIFY(!tool::SettleMovie(QFile::encodeName(path).toStdString()));
    QVERIFY2(Content(path) == m_pieces, "it was changed");
}

QTEST_GUILESS_MAIN(ToolKeeperTest)
#include "tool_keeper_test.moc"
