// The file of a recording, and the order in which data reaches the disk.
#include "tests/support/ordinary_movie.h"
#include "tests/support/tool_movies.h"
#include "tool/mp4/settle.h"
#include "tool/record/recording_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <memory>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using tool::RecordingFile;

namespace {

// What was flushed to the disk last.
ino_t g_folder = 0;
off_t g_size = -1;
int g_flushes = 0;

// The content of this file at each flush.
QString g_watched;
QList<QByteArray> g_contents;
bool g_diskFails = false;

void Note(int file)
{
    struct stat status = {};
    fstat(file, &status);
    if (S_ISDIR(status.st_mode)) {
        g_folder = status.st_ino;
    } else {
        g_size = status.st_size;
        ++g_flushes;
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

class ToolRecordingFileTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void fileBecomesAnOrdinaryMovieInTheEnd();
    void movedFileIsSettledWhereItLies();
    void diskHasTheFileAndItsName();
    void diskThatFailsOnceIsAskedAgain();
    void fileThatExistsIsLeftAlone_data();
    void fileThatExistsIsLeftAlone();
    void folderThatIsMissingIsTold();
    void emptyFileIsRemoved();
    void headersAloneAreRemoved();
    void tornFragmentIsKept();
    void fileOfSomebodyElseIsNotRemoved();
    void diskHasTheIndexBeforeItIsUsed();
    void diskThatFailsLeavesTheMovieAsItWas();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_folder->filePath(name); }
    RecordingFile Create(const QString& name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_fragmented; // a recording as ffmpeg leaves it
};

void ToolRecordingFileTest::initTestCase()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("fragmented.mp4");
    const QByteArray problem = MakeMovie(
        PictureInput(3) + ToneInput(3) + PlainCodecs() +
        QStringList{"-g", "25", "-movflags", "+frag_keyframe+delay_moov+default_base_moof", path});
    QVERIFY2(problem.isEmpty(), problem);
    QVERIFY(!IsOrdinary(path));
    m_fragmented = Content(path);
}

void ToolRecordingFileTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    g_watched.clear();
    g_contents.clear();
    g_diskFails = false;
    g_folder = 0;
    g_size = -1;
    g_flushes = 0;
}

RecordingFile ToolRecordingFileTest::Create(const QString& name) const
{
    return RecordingFile::Create(QFile::encodeName(Path(name)).toStdString()).value();
}

void ToolRecordingFileTest::fileBecomesAnOrdinaryMovieInTheEnd()
{
    const RecordingFile file = Create("r.mp4");
    QVERIFY(!file.HasContent());
    QVERIFY(Write(QString::fromStdString(file.Name()), m_fragmented));
    QVERIFY(file.HasContent());
    QVERIFY2(Content(Path("r.mp4")) == m_fragmented, "the name leads to another file");
    file.Finish();
    QVERIFY2(IsOrdinary(Path("r.mp4")), "it is still fragmented");
    QCOMPARE(DecodingErrors(Path("r.mp4")), QByteArray());
}

void ToolRecordingFileTest::movedFileIsSettledWhereItLies()
{
    const RecordingFile file = Create("r.mp4");
    QVERIFY(QFile::rename(Path("r.mp4"), Path("moved.mp4")));
    QVERIFY(Write(Path("r.mp4"), m_fragmented)); // a file of somebody else
    QVERIFY(Write(QString::fromStdString(file.Name()), m_fragmented));
    file.Finish();
    QVERIFY2(IsOrdinary(Path("moved.mp4")), "it is still fragmented");
    QVERIFY2(Content(Path("r.mp4")) == m_fragmented, "another file was changed");
}

void ToolRecordingFileTest::diskHasTheFileAndItsName()
{
    RecordingFile file = Create("r.mp4");
    file.SyncName();
    struct stat folder = {};
    QCOMPARE(stat(QFile::encodeName(m_folder->path()), &folder), 0);
    QVERIFY2(g_folder == folder.st_ino, "a power cut would lose the file's name");
    for (const char* bytes : {"12345", "1234567"}) {
        QVERIFY(Write(Path("r.mp4"), bytes));
        file.Sync();
        QCOMPARE(g_size, static_cast<off_t>(qstrlen(bytes)));
    }
    const int before = g_flushes;
    file.Sync();
    QVERIFY2(g_flushes == before, "what has not grown is flushed again");
}

void ToolRecordingFileTest::diskThatFailsOnceIsAskedAgain()
{
    RecordingFile file = Create("r.mp4");
    QVERIFY(Write(Path("r.mp4"), "12345"));
    g_diskFails = true;
    file.Sync();
    g_diskFails = false;
    file.Sync();
    QCOMPARE(g_flushes, 2);
}

void ToolRecordingFileTest::fileThatExistsIsLeftAlone_data()
{
    QTest::addColumn<bool>("isLink");
    QTest::newRow("a file") << false;
    QTest::newRow("a link that leads nowhere") << true;
}

void ToolRecordingFileTest::fileThatExistsIsLeftAlone()
{
    QFETCH(bool, isLink);
    const QString path = Path("there.mp4");
    QVERIFY(isLink ? QFile::link(Path("elsewhere.mp4"), path) : Write(path, m_fragmented));
    QVERIFY(!RecordingFile::Create(QFile::encodeName(path).toStdString()));
    QCOMPARE(errno, EEXIST);
    QVERIFY(isLink ? QFileInfo(path).isSymLink() : Content(path) == m_fragmented);
    QVERIFY2(!QFile::exists(Path("elsewhere.mp4")), "it was written through the link");
}

void ToolRecordingFileTest::folderThatIsMissingIsTold()
{
    QVERIFY(!RecordingFile::Create(QFile::encodeName(Path("missing/r.mp4")).toStdString()));
    QCOMPARE(errno, ENOENT);
}

void ToolRecordingFileTest::emptyFileIsRemoved()
{
    const RecordingFile file = Create("r.mp4");
    QVERIFY(QFile::exists(Path("r.mp4")));
    file.Finish();
    QVERIFY2(!QFile::exists(Path("r.mp4")), "a file that does not play is left");
}

// ffmpeg was told to end before it had a frame.
void ToolRecordingFileTest::headersAloneAreRemoved()
{
    const RecordingFile file = Create("r.mp4");
    QVERIFY(Write(Path("r.mp4"), m_fragmented.left(m_fragmented.indexOf("moof") - 4)));
    file.Finish();
    QVERIFY2(!QFile::exists(Path("r.mp4")), "a file that does not play is left");
}

// Nothing that could be a frame is removed.
void ToolRecordingFileTest::tornFragmentIsKept()
{
    const RecordingFile file = Create("r.mp4");
    QVERIFY(Write(Path("r.mp4"), m_fragmented.left(m_fragmented.indexOf("moof") + 20)));
    file.Finish();
    QVERIFY2(QFile::exists(Path("r.mp4")), "the file is gone");
}

// The empty file was moved away, and another has taken its name.
void ToolRecordingFileTest::fileOfSomebodyElseIsNotRemoved()
{
    const RecordingFile file = Create("r.mp4");
    QVERIFY(QFile::rename(Path("r.mp4"), Path("moved.mp4")));
    QVERIFY(Write(Path("r.mp4"), {}));
    file.Finish();
    QVERIFY2(QFile::exists(Path("r.mp4")), "another file was removed");
}

// In between the file is either one movie or the other, whenever the power fails.
void ToolRecordingFileTest::diskHasTheIndexBeforeItIsUsed()
{
    const QString path = Path("r.mp4");
    QVERIFY(Write(path, m_fragmented));
    g_watched = path;
    QVERIFY(tool::SettleMovie(QFile::encodeName(path).toStdString()));
    const QByteArray settled = Content(path);
    QCOMPARE(g_contents.size(), 2);
    QVERIFY2(g_contents[0].startsWith(m_fragmented),
             "the header is changed before the disk has the index");
    QVERIFY2(g_contents[0].mid(m_fragmented.size()) == settled.mid(m_fragmented.size()),
             "the index is not complete");
    QVERIFY2(g_contents[1] == settled && settled != g_contents[0],
             "the disk does not have the new header");
}

void ToolRecordingFileTest::diskThatFailsLeavesTheMovieAsItWas()
{
    const QString path = Path("r.mp4");
    QVERIFY(Write(path, m_fragmented));
    g_diskFails = true;
    QVERIFY(!tool::SettleMovie(QFile::encodeName(path).toStdString()));
    QVERIFY2(Content(path) == m_fragmented, "it was changed");
}

QTEST_GUILESS_MAIN(ToolRecordingFileTest)
#include "tool_recording_file_test.moc"
