#include "jobs/folder_scan.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

class FolderScanTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_directory = std::make_unique<QTemporaryDir>(); }

    void everyEndingOfMp4IsTakenAndNothingElse()
    {
        for (const char* name : {"clip.MP4", "b.mp4", "C.Mp4", "clip.mov", "clip.mp4.bak", "mp4",
                                 ".hidden.mp4", "x.y.mP4"}) {
            Make(name);
        }
        QCOMPARE(Names(Scan()), QStringList({"b.mp4", "C.Mp4", "clip.MP4", "x.y.mP4"}));
    }

    void aDirectoryNamedLikeAVideoIsNotListedNorEntered()
    {
        QVERIFY(QDir(m_directory->path()).mkdir("x.mp4"));
        Make("x.mp4/inside.mp4");
        QCOMPARE(Names(Scan()), QStringList());
    }

    void aLinkToAVideoIsListedAndABrokenOneIsNot()
    {
        Make("a.mp4");
        QVERIFY(QFile::link(Path("a.mp4"), Path("link.mp4")));
        QVERIFY(QFile::link(Path("gone.mp4"), Path("broken.mp4")));
        QCOMPARE(Names(Scan()), QStringList({"a.mp4", "link.mp4"}));
    }

    void theRecordHoldsSizeTimeAndName()
    {
        const QString name = QString::fromUtf8("\u00c4 \u4e2d\u6587 \U0001F3AC %1|\".mp4");
        Make(name, "12345", QDateTime(QDate(2018, 3, 5), QTime(14, 7, 9)));
        const auto files = Scan();
        QCOMPARE(files.size(), 1);
        QCOMPARE(files.first().llSize, 5);
        QCOMPARE(files.first().strOther, std::string());
        QCOMPARE(QString::fromWCharArray(files.first().szModifyTime),
                 QString("2018-03-05 14:07:09"));
        QCOMPARE(QString::fromWCharArray(files.first().szFileName), name);
    }

    void theLongestNameTheSystemTakesFits()
    {
        const QString name = QString(251, 'n') + ".mp4";
        Make(name);
        QCOMPARE(Names(Scan()), QStringList{name});
    }

    void aTextTooLongForItsFieldIsCutAndTerminated()
    {
        wchar_t field[4] = {L'x', L'x', L'x', L'x'};
        CopyWide("abcdef", field);
        QCOMPARE(QString::fromWCharArray(field), QString("abc"));
        CopyWide(QString(), field);
        QCOMPARE(QString::fromWCharArray(field), QString());
    }

    void withOrWithoutATrailingSlashTheRecordsAreTheSame()
    {
        Make("a.mp4");
        QVector<_FILE_INFO_> with;
        TraverseFolder(m_directory->path() + '/', with);
        QCOMPARE(Names(with), Names(Scan()));
        QCOMPARE(with.size(), 1);
    }

    void aTrailingSlashIsNotDoubled()
    {
        QVector<_FILE_INFO_> files;
        QTest::ignoreMessage(QtDebugMsg, qPrintable('"' + m_directory->path() + "/\""));
        TraverseFolder(m_directory->path() + '/', files);
    }

    void aScanAppendsToWhatIsThere()
    {
        Make("a.mp4");
        auto files = Scan();
        TraverseFolder(m_directory->path(), files);
        QCOMPARE(Names(files), QStringList({"a.mp4", "a.mp4"}));
    }

    void aDirectoryThatIsEmptyOrMissingGivesNothing()
    {
        QCOMPARE(Scan().size(), 0);
        QVector<_FILE_INFO_> files;
        TraverseFolder(Path("missing"), files);
        QCOMPARE(files.size(), 0);
        Make("a.mp4");
        TraverseFolder(Path("a.mp4"), files);
        QCOMPARE(files.size(), 0);
    }

    void aDirectoryThatCannotBeReadGivesNothing()
    {
        Make("a.mp4");
        const QString path = m_directory->path();
        QVERIFY(QFile::setPermissions(path, QFile::Permissions()));
        const bool readable = QFileInfo(path).isReadable(); // always true for root
        const auto files = Scan();
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(files.size(), readable ? 1 : 0);
    }

    void theOrderBeforeSortingIsThatOfTheNamesIgnoringCase()
    {
        for (const char* name : {"c.mp4", "B.mp4", "a.mp4"}) {
            Make(name);
        }
        QCOMPARE(Names(Scan()), QStringList({"a.mp4", "B.mp4", "c.mp4"}));
    }

    void theScanOfNothingIsTheScanOfTheRoot()
    {
        QTest::ignoreMessage(QtDebugMsg, "\"/\"");
        QVector<_FILE_INFO_> files;
        TraverseFolder(QString(), files);
    }

    void directoryAndTimesAreLogged()
    {
        Make("a.mp4", "x", QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5)));
        QTest::ignoreMessage(QtDebugMsg, qPrintable('"' + m_directory->path() + "/\""));
        QTest::ignoreMessage(QtDebugMsg, "\"2020-01-02 03:04:05\"");
        Scan();
    }

    void theNewestComesFirst()
    {
        Make("old.mp4", "x", QDateTime(QDate(2019, 12, 31), QTime(23, 59, 59)));
        Make("new.mp4", "x", QDateTime(QDate(2020, 2, 1), QTime(0, 0, 1)));
        Make("middle.mp4", "x", QDateTime(QDate(2020, 2, 1), QTime(0, 0, 0)));
        QCOMPARE(Names(NewestFirst(m_directory->path())),
                 QStringList({"new.mp4", "middle.mp4", "old.mp4"}));
    }

    void filesOfOneSecondAreEqual()
    {
        _FILE_INFO_ a;
        _FILE_INFO_ b;
        CopyWide("2020-02-01 00:00:01", a.szModifyTime);
        CopyWide("2020-02-01 00:00:00", b.szModifyTime);
        QVERIFY(VectorCmp(a, b) != 0);
        QCOMPARE(VectorCmp(b, a), 0);
        CopyWide("a", a.szFileName);
        CopyWide("b", b.szFileName);
        CopyWide("2020-02-01 00:00:00", a.szModifyTime);
        QCOMPARE(VectorCmp(a, b), 0);
        QCOMPARE(VectorCmp(b, a), 0);
    }

    void twoThousandVideosAreSorted()
    {
        const QDateTime first(QDate(2020, 1, 1), QTime(0, 0));
        for (int i = 0; i < 2000; ++i) {
            Make(QString("%1.mp4").arg(i), "x", first.addSecs(i * 7919 % 2000));
        }
        const auto files = NewestFirst(m_directory->path());
        QCOMPARE(files.size(), 2000);
        QVERIFY(std::is_sorted(files.begin(), files.end(), VectorCmp));
    }

private:
    QString Path(const QString& name) { return m_directory->filePath(name); }

    void Make(const QString& name, const QByteArray& content = "x",
              const QDateTime& modified = QDateTime())
    {
        QFile file(Path(name));
        QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable("cannot make " + name));
        file.write(content);
        file.flush();
        if (modified.isValid()) {
            QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
        }
    }

    QVector<_FILE_INFO_> Scan()
    {
        QVector<_FILE_INFO_> files;
        TraverseFolder(m_directory->path(), files);
        return files;
    }

    static QStringList Names(const QVector<_FILE_INFO_>& files)
    {
        QStringList names;
        for (const auto& file : files) {
            names << QString::fromWCharArray(file.szFileName);
        }
        return names;
    }

    std::unique_ptr<QTemporaryDir> m_directory;
};

QTEST_GUILESS_MAIN(FolderScanTest)
#include "folder_scan_test.moc"
