// The file of a job: made beside its destination, and never instead of another.
#include "tool/edit/part_file.h"
#include "tool/system/rename_free.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

class ToolPartFileTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { RemoveAll(); }
    void fileAppearsWithItsName_data();
    void fileAppearsWithItsName();
    void otherFilesStayAsTheyAre();
    void takenNameGetsANumber_data();
    void takenNameGetsANumber();
    void removedFileLeavesNothing();
    void fileOfSomebodyElseIsNotRemoved();
    void folderMayBeMoved();
    void folderMayBeRemoved();
    void whatCannotBeMadeIsTold_data();
    void whatCannotBeMadeIsTold();
    void rootGivesTheFileToTheFoldersOwner();
    void renamingWithoutTheSystemCallReplacesNothing();
    void muxerFollowsTheExtension();
    void onlyWholeMoviesCount_data();
    void onlyWholeMoviesCount();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    std::string Path(const QByteArray& name) const
    {
        return (QFile::encodeName(m_folder->path()) + '/' + name).toStdString();
    }
    QStringList Names() const
    {
        QStringList names;
        for (const auto& entry : std::filesystem::directory_iterator(Path(""))) {
            if (!entry.is_directory()) {
                names << QString::fromStdString(entry.path().filename().string());
            }
        }
        names.sort();
        return names;
    }
    // Neither can it remove one.
    void RemoveAll() const
    {
        for (const auto& entry : std::filesystem::directory_iterator(Path(""))) {
            std::filesystem::remove_all(entry);
        }
    }
    void Write(const QByteArray& name, const QByteArray& content) const
    {
        std::ofstream file(Path(name), std::ios::binary);
        file << content.toStdString();
        QVERIFY(file.flush());
    }
    static void Fill(const tool::PartFile& part, const QByteArray& content)
    {
        QCOMPARE(write(part.File(), content.constData(), static_cast<size_t>(content.size())),
                 content.size());
    }
    // Qt cannot open a file of any name.
    QByteArray Content(const QByteArray& name) const
    {
        std::ifstream file(Path(name), std::ios::binary);
        std::stringstream content;
        content << file.rdbuf();
        return file ? QByteArray::fromStdString(content.str()) : QByteArray("(none)");
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void ToolPartFileTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void ToolPartFileTest::fileAppearsWithItsName_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("part");
    QTest::newRow("plain") << QByteArray("a.mp4") << QByteArray("a.mp4.part");
    QTest::newRow("no extension") << QByteArray("a") << QByteArray("a.part");
    QTest::newRow("hidden") << QByteArray(".mp4") << QByteArray(".mp4.part");
    QTest::newRow("any bytes") << QByteArray("-i '%d\"\n\xff|.mp4")
                               << QByteArray("-i '%d\"\n\xff|.mp4.part");
    QTest::newRow("250 bytes") << QByteArray(250, 'x') << QByteArray(250, 'x') + ".part";
    QTest::newRow("no room for the ending")
        << QByteArray(251, 'x') + ".mp4" << QByteArray(".lumenfold.part");
}

void ToolPartFileTest::fileAppearsWithItsName()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, part);
    tool::PartFile file(Path(name));
    QVERIFY2(file.IsOpen(), file.Problem().c_str());
    Fill(file, "movie");
    QCOMPARE(file.Size(), uint64_t{5});
    QCOMPARE(Content(part), QByteArray("movie"));
    QCOMPARE(Names().size(), 1);
    QVERIFY(file.Sync());
    QCOMPARE(file.Publish(), Path(name));
    QCOMPARE(Content(name), QByteArray("movie"));
    QCOMPARE(Names().size(), 1);
}

void ToolPartFileTest::otherFilesStayAsTheyAre()
{
    Write("a.mp4.part", "browser's");
    QVERIFY(QFile::link("elsewhere", m_folder->filePath("a.mp4 (1).part")));
    tool::PartFile file(Path("a.mp4"));
    QVERIFY2(file.IsOpen(), file.Problem().c_str());
    Fill(file, "movie");
    QCOMPARE(Content("a.mp4 (2).part"), QByteArray("movie"));
    QCOMPARE(file.Publish(), Path("a.mp4"));
    QCOMPARE(Content("a.mp4.part"), QByteArray("browser's"));
    QVERIFY(!QFile::exists(m_folder->filePath("elsewhere")));
}

void ToolPartFileTest::takenNameGetsANumber_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("movie") << QByteArray("a.b.mp4") << QByteArray("a.b (2).mp4");
    QTest::newRow("no extension") << QByteArray("a") << QByteArray("a (2)");
    QTest::newRow("hidden") << QByteArray(".mp4") << QByteArray(".mp4 (2)");
}

void ToolPartFileTest::takenNameGetsANumber()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, expected);
    tool::PartFile file(Path(name));
    Fill(file, "movie");
    Write(name, "somebody's");
    const std::string first = tool::NumberedName(name.toStdString(), 1);
    QVERIFY(QFile::link("nowhere", m_folder->filePath(QString::fromStdString(first))));
    QCOMPARE(file.Publish(), Path(expected));
    QCOMPARE(Content(expected), QByteArray("movie"));
    QCOMPARE(Content(name), QByteArray("somebody's"));
}

void ToolPartFileTest::removedFileLeavesNothing()
{
    tool::PartFile file(Path("a.mp4"));
    file.Remove();
    QCOMPARE(Names(), QStringList());
}

void ToolPartFileTest::fileOfSomebodyElseIsNotRemoved()
{
    tool::PartFile file(Path("a.mp4"));
    QVERIFY(QFile::remove(m_folder->filePath("a.mp4.part")));
    Write("a.mp4.part", "somebody's");
    file.Remove();
    QCOMPARE(Content("a.mp4.part"), QByteArray("somebody's"));
}

void ToolPartFileTest::folderMayBeMoved()
{
    QVERIFY(QDir(m_folder->path()).mkdir("before"));
    tool::PartFile file(Path("before/a.mp4"));
    QVERIFY(QDir(m_folder->path()).rename("before", "after"));
    Fill(file, "movie");
    QVERIFY(!file.Publish().empty());
    QCOMPARE(Content("after/a.mp4"), QByteArray("movie"));
}

void ToolPartFileTest::folderMayBeRemoved()
{
    QVERIFY(QDir(m_folder->path()).mkdir("folder"));
    tool::PartFile file(Path("folder/a.mp4"));
    QVERIFY(QDir(m_folder->filePath("folder")).removeRecursively());
    QCOMPARE(file.Publish(), std::string());
    file.Remove();
    QVERIFY(!QFile::exists(m_folder->filePath("folder")));
}

void ToolPartFileTest::whatCannotBeMadeIsTold_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("no such folder") << QByteArray("missing/a.mp4");
    QTest::newRow("a file is no folder") << QByteArray("file/a.mp4");
    QTest::newRow("a folder is no file") << QByteArray("folder/");
    QTest::newRow("the folder itself") << QByteArray("folder/.");
    QTest::newRow("name too long") << QByteArray(300, 'x');
    QTest::newRow("path too long") << QByteArray(5000, 'x') + "/a.mp4";
    QTest::newRow("no files there") << QByteArray("../../../../../../../proc/a.mp4");
}

void ToolPartFileTest::whatCannotBeMadeIsTold()
{
    QFETCH(QByteArray, name);
    Write("file", "somebody's");
    QVERIFY(QDir(m_folder->path()).mkdir("folder"));
    tool::PartFile file(Path(name));
    if (name.size() == 300) { // only its own name is too long
        QVERIFY(file.IsOpen());
        QCOMPARE(file.Publish(), std::string());
        file.Remove();
    } else {
        QVERIFY(!file.IsOpen());
        QVERIFY2(file.Problem().find(Path(name)) == 0, file.Problem().c_str());
    }
    QCOMPARE(Names(), QStringList{"file"});
    QVERIFY(!tool::PartFile("").IsOpen());
}

void ToolPartFileTest::rootGivesTheFileToTheFoldersOwner()
{
    if (geteuid() != 0) {
        QSKIP("only root can give files away");
    }
    constexpr uid_t user = 4321;
    QCOMPARE(chown(QFile::encodeName(m_folder->path()).constData(), user, user), 0);
    tool::PartFile file(Path("a.mp4"));
    QVERIFY(!file.Publish().empty());
    struct stat status = {};
    QCOMPARE(stat(Path("a.mp4").c_str(), &status), 0);
    QCOMPARE(status.st_uid, user);
    QCOMPARE(status.st_gid, user);
}

void ToolPartFileTest::renamingWithoutTheSystemCallReplacesNothing()
{
    Write("a", "movie");
    Write("b", "somebody's");
    const int folder = open(QFile::encodeName(m_folder->path()), O_RDONLY | O_DIRECTORY);
    QVERIFY(!tool::LinkToFree(folder, "a", "b"));
    QCOMPARE(errno, EEXIST);
    QVERIFY(tool::LinkToFree(folder, "a", "c"));
    QVERIFY(!tool::LinkToFree(folder, "missing", "d"));
    close(folder);
    QCOMPARE(Names(), QStringList({"b", "c"}));
    QCOMPARE(Content("b"), QByteArray("somebody's"));
    QCOMPARE(Content("c"), QByteArray("movie"));
}

void ToolPartFileTest::muxerFollowsTheExtension()
{
    QCOMPARE(tool::MuxerFor("/a.b/c.mov"), std::string("mov"));
    for (const char* path : {"/a/b.mp4", "/a/b.MP4", "/a/b", "/a.mkv/b", "/a/.mp4", "/a/b.xyz"}) {
        QCOMPARE(tool::MuxerFor(path), std::string("mp4"));
    }
}

void ToolPartFileTest::onlyWholeMoviesCount_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("counts");
    const auto box = [](const char* type, int size) {
        return QByteArray("\0\0\0", 3) + static_cast<char>(size + 8) + type + QByteArray(size, 'x');
    };
    const QByteArray content = box("ftyp", 8) + box("mdat", 50);
    const QByteArray index = box("moov", 40);
    QTest::newRow("whole") << QByteArray("a.mp4") << content + index << true;
    QTest::newRow("index first") << QByteArray("a.mp4") << index + content << true;
    QTest::newRow("empty") << QByteArray("a.mp4") << QByteArray() << false;
    QTest::newRow("no index") << QByteArray("a.mp4") << content << false;
    QTest::newRow("half an index") << QByteArray("a.mp4") << content + index.left(20) << false;
    QTest::newRow("no content") << QByteArray("a.mp4") << box("mdat", 0) + index << false;
    QTest::newRow("no movie") << QByteArray("a") << QByteArray(100, 'x') << false;
    QTest::newRow("another format") << QByteArray("a.mkv") << QByteArray(100, 'x') << true;
    QTest::newRow("another format, empty") << QByteArray("a.mkv") << QByteArray() << false;
}

void ToolPartFileTest::onlyWholeMoviesCount()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, content);
    QFETCH(bool, counts);
    const tool::PartFile file(Path(name));
    Fill(file, content);
    QCOMPARE(file.IsMovie(), counts);
}

QTEST_APPLESS_MAIN(ToolPartFileTest)
#include "tool_part_file_test.moc"
