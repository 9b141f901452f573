#include "util/ownership.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uid_t kUser = 65534;
constexpr gid_t kGroup = 65533;

bool Make(const QString& path)
{
    return QFile(path).open(QIODevice::WriteOnly | QIODevice::NewOnly);
}

void Give(const QString& path)
{
    GiveToFolderOwner(QFile::encodeName(path).constData());
}

QString OwnerOf(const QString& path)
{
    struct stat status = {};
    return lstat(qPrintable(path), &status) == 0
               ? QString("%1:%2").arg(status.st_uid).arg(status.st_gid)
               : QString("not there");
}

} // namespace

// What root creates in a user's folder belongs to the user.
class OwnershipTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_parent = std::make_unique<QTemporaryDir>();
        m_folder = m_parent->filePath("home");
        QVERIFY(QDir().mkdir(m_folder));
        m_mine = OwnerOf(m_folder);
        if (geteuid() == 0) {
            QCOMPARE(chown(qPrintable(m_folder), kUser, kGroup), 0);
        }
    }

    void aFileGetsTheOwnerOfItsFolder()
    {
        const QString path = m_folder + QString::fromUtf8("/Größe 录.mp4");
        QVERIFY(Make(path));
        Give(path);
        QCOMPARE(OwnerOf(path), geteuid() == 0 ? Users() : m_mine);
    }

    void aFolderGetsTheOwnerOfItsFolder()
    {
        for (const char* slashes : {"", "/", "//"}) {
            const QString path = m_folder + "/Save" + QString(slashes).replace('/', 's');
            QVERIFY(QDir().mkdir(path));
            Give(path + slashes);
            QCOMPARE(OwnerOf(path), geteuid() == 0 ? Users() : m_mine);
        }
    }

    void aRelativePathLiesInTheWorkingDirectory()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder) && Make("a.mp4"));
        Give("a.mp4");
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(OwnerOf(m_folder + "/a.mp4"), geteuid() == 0 ? Users() : m_mine);
    }

    void aLinkGivesNothingAway()
    {
        const QString secret = m_parent->filePath("secret");
        QVERIFY(Make(secret) && QFile::link(secret, m_folder + "/a.mp4"));
        QVERIFY(QFile::link(m_parent->path(), m_folder + "/b.mp4"));
        const QString parent = OwnerOf(m_parent->path());
        Give(m_folder + "/a.mp4");
        Give(m_folder + "/b.mp4");
        QCOMPARE(OwnerOf(secret), m_mine);
        QCOMPARE(OwnerOf(m_folder + "/a.mp4"), m_mine);
        QCOMPARE(OwnerOf(m_parent->path()), parent);
    }

    void aFileWithASecondNameIsNotGivenAway()
    {
        const QString secret = m_parent->filePath("secret");
        QVERIFY(Make(secret));
        QCOMPARE(link(qPrintable(secret), qPrintable(m_folder + "/a.mp4")), 0);
        Give(m_folder + "/a.mp4");
        QCOMPARE(OwnerOf(secret), m_mine);
    }

    void aFileOfAnotherUserIsNotTaken()
    {
        if (geteuid() != 0) {
            QSKIP("needs root");
        }
        const QString path = m_folder + "/a.mp4";
        QVERIFY(Make(path));
        QCOMPARE(chown(qPrintable(path), 1, 1), 0);
        Give(path);
        QCOMPARE(OwnerOf(path), QString("1:1"));
    }

    // Opening a pipe would block forever.
    void aPipeIsLeftAlone()
    {
        const QString path = m_folder + "/a.mp4";
        QCOMPARE(mkfifo(qPrintable(path), 0600), 0);
        Give(path);
        QCOMPARE(OwnerOf(path), m_mine);
    }

    void whatIsNotThereIsNoFailure()
    {
        Give(m_folder + "/none.mp4");
        Give(m_folder + "/none/none.mp4");
        Give("");
        Give("/");
        QVERIFY(QDir(m_folder).isEmpty());
    }

private:
    static QString Users() { return QString("%1:%2").arg(kUser).arg(kGroup); }

    std::unique_ptr<QTemporaryDir> m_parent;
    QString m_folder;
    QString m_mine;
};

QTEST_APPLESS_MAIN(OwnershipTest)
#include "ownership_test.moc"
