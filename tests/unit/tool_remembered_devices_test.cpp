// The device lists that `tool` keeps for the next recording.
#include "tool/devices/remembered_devices.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using Sources = std::vector<std::string>;
using tool::RecallDevices;
using tool::RememberDevices;

class ToolRememberedDevicesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void listIsRemembered();
    void ownListComesBeforeTheLastOfAll();
    void lastListOfAllServesOtherPrograms();
    void listOfAnotherServerIsNotUsed();
    void tornListIsNotUsed();
    void listThatCannotBeWrittenLeavesNothingBehind_data();
    void listThatCannotBeWrittenLeavesNothingBehind();
    void listsOfEndedProgramsAreForgotten();
    void folderThatOthersCanChangeIsNotUsed_data();
    void folderThatOthersCanChangeIsNotUsed();
    void withoutARuntimeFolderTheTemporaryOneIsUsed();

private: // NOLINT(readability-redundant-access-specifiers): what follows is no test
    QString Folder() const { return m_folder->filePath("lumenfold-recorder"); }
    QString OwnList() const { return Folder() + "/devices-" + QString::number(getppid()); }
    QString LastList() const { return Folder() + "/devices"; }
    static void Write(const QString& path, const QByteArray& text)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    static QByteArray Content(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void ToolRememberedDevicesTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder->path()));
    qputenv("PULSE_SERVER", "unix:/here");
}

void ToolRememberedDevicesTest::listIsRemembered()
{
    QVERIFY2(!RecallDevices(), "there is a list already");
    const Sources sources = {"microphone", "a monitor"};
    RememberDevices(sources);
    QVERIFY(RecallDevices() == sources);
    const QByteArray text = "server unix:/here\nmicrophone\na monitor\n";
    QCOMPARE(Content(OwnList()), text);
    QCOMPARE(Content(LastList()), text);
    const QStringList names = QDir(Folder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    QCOMPARE(names.size(), 2);
    RememberDevices({});
    QVERIFY(RecallDevices() == Sources());
}

// Another program has listed devices in the meantime.
void ToolRememberedDevicesTest::ownListComesBeforeTheLastOfAll()
{
    RememberDevices({"mine"});
    Write(LastList(), "server unix:/here\nanother's\n");
    QVERIFY(RecallDevices() == Sources{"mine"});
}

void ToolRememberedDevicesTest::lastListOfAllServesOtherPrograms()
{
    RememberDevices({"mine"});
    QVERIFY(QFile::remove(OwnList()));
    QVERIFY(RecallDevices() == Sources{"mine"});
}

void ToolRememberedDevicesTest::listOfAnotherServerIsNotUsed()
{
    RememberDevices({"mine"});
    qputenv("PULSE_SERVER", "unix:/there");
    QVERIFY(!RecallDevices());
}

void ToolRememberedDevicesTest::tornListIsNotUsed()
{
    RememberDevices({"mine"});
    Write(OwnList(), "server unix:/here\nmi");
    Write(LastList(), "");
    QVERIFY(!RecallDevices());
}

void ToolRememberedDevicesTest::listThatCannotBeWrittenLeavesNothingBehind_data()
{
    QTest::addColumn<bool>("disk");
    QTest::newRow("a folder in its place") << false;
    QTest::newRow("no room on the disk") << true;
}

void ToolRememberedDevicesTest::listThatCannotBeWrittenLeavesNothingBehind()
{
    QFETCH(bool, disk);
    RememberDevices({"first"});
    if (disk) {
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{5, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        RememberDevices({"second"});
        setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY2(RecallDevices() == Sources{"first"}, "the list that was there is lost");
    } else {
        QVERIFY(QFile::remove(OwnList()) && QDir().mkpath(OwnList() + "/something"));
        RememberDevices({"second"});
        QVERIFY(RecallDevices() == Sources{"second"}); // from the shared list
    }
    const QStringList left = QDir(Folder()).entryList({"*.new-*"});
    QVERIFY2(left.isEmpty(), qPrintable(left.join(' ')));
}

void ToolRememberedDevicesTest::listsOfEndedProgramsAreForgotten()
{
    RememberDevices({"mine"});
    const pid_t ended = fork();
    if (ended == 0) {
        _exit(0);
    }
    QCOMPARE(waitpid(ended, nullptr, 0), ended);
    const QString theirs = Folder() + "/devices-" + QString::number(ended);
    const QString living = Folder() + "/devices-" + QString::number(getpid());
    const QStringList others = {living, Folder() + "/devices-none", Folder() + "/other"};
    for (const QString& path : others + QStringList{theirs}) {
        Write(path, "server unix:/here\n");
    }
    RememberDevices({"mine"});
    QVERIFY2(!QFile::exists(theirs), "the list of an ended program stays");
    for (const QString& path : others) {
        QVERIFY2(QFile::exists(path), qPrintable(path));
    }
}

void ToolRememberedDevicesTest::folderThatOthersCanChangeIsNotUsed_data()
{
    QTest::addColumn<int>("more");
    QTest::newRow("by the group") << int{QFile::WriteGroup};
    QTest::newRow("by anyone") << int{QFile::WriteOther};
    QTest::newRow("elsewhere, by a link") << 0;
}

void ToolRememberedDevicesTest::folderThatOthersCanChangeIsNotUsed()
{
    QFETCH(int, more);
    const QFile::Permissions own = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    if (more != 0) {
        QVERIFY(QDir().mkpath(Folder()));
        QVERIFY(QFile::setPermissions(Folder(), own | QFile::Permissions(more)));
    } else {
        const QString elsewhere = m_folder->filePath("elsewhere");
        QVERIFY(QDir().mkpath(elsewhere) && QFile::setPermissions(elsewhere, own));
        QVERIFY(QFile::link(elsewhere, Folder()));
    }
    RememberDevices({"mine"});
    QVERIFY2(QDir(Folder()).isEmpty(), "a list was written");
    Write(LastList(), "server unix:/here\nplanted\n");
    QVERIFY2(!RecallDevices(), "a planted list is used");
}

void ToolRememberedDevicesTest::withoutARuntimeFolderTheTemporaryOneIsUsed()
{
    qunsetenv("XDG_RUNTIME_DIR");
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(m_folder->path()));
    RememberDevices({"mine"});
    const QDir folder(m_folder->filePath("lumenfold-recorder-" + QString::number(getuid())));
    QVERIFY(folder.exists("devices"));
    QCOMPARE(QFile::permissions(folder.path()) &
                 (QFile::WriteGroup | QFile::WriteOther | QFile::ReadGroup | QFile::ReadOther),
             QFile::Permissions());
    QVERIFY(RecallDevices() == Sources{"mine"});
    before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before);
}

QTEST_APPLESS_MAIN(ToolRememberedDevicesTest)
#include "tool_remembered_devices_test.moc"
