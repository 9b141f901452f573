#include "tool/screen/portal/restore_token.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace tool;

namespace {

const std::string kToken = "934750eb-68f0-448d-8930-34377bab5b3e";
const std::string kOther = "00000000-0000-0000-0000-000000000000";
constexpr Rectangle kScreen{0, 0, 1920, 1080};

} // namespace

class ToolRestoreTokenTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        qputenv("XDG_STATE_HOME", m_folder->path().toUtf8());
    }

    void tokenIsStoredForEachScreen()
    {
        constexpr Rectangle second{1920, 0, 1920, 1080};
        QCOMPARE(RecallToken(kScreen), std::string());
        StoreToken(kScreen, kToken);
        StoreToken(second, kOther);
        QCOMPARE(RecallToken(kScreen), kToken);
        QCOMPARE(RecallToken(second), kOther);
        StoreToken(kScreen, kOther);
        QCOMPARE(RecallToken(kScreen), kOther);
    }

    // A permission for one recording leaves nothing for the next.
    void usedTokenIsForgotten()
    {
        StoreToken(kScreen, kToken);
        StoreToken(kScreen, "");
        QCOMPARE(RecallToken(kScreen), std::string());
        QCOMPARE(Entries(), QStringList());
    }

    void nobodyElseCanReadIt()
    {
        const mode_t before = umask(0);
        StoreToken(kScreen, kToken);
        umask(before);
        QCOMPARE(Entries().size(), 1);
        struct stat info = {};
        QCOMPARE(stat(qPrintable(File()), &info), 0);
        QCOMPARE(info.st_mode & 07777U, 0600U);
        QCOMPARE(stat(qPrintable(QFileInfo(File()).path()), &info), 0);
        QCOMPARE(info.st_mode & 07777U, 0700U);
    }

    void onlyTokensAreStoredAndSent_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("a line") << QByteArray("no token\n");
        QTest::newRow("too short") << QByteArray("934750eb-68f0-448d-8930-34377bab5b3");
        QTest::newRow("too long") << QByteArray("934750eb-68f0-448d-8930-34377bab5b3e0");
        QTest::newRow("two") << QByteArray(2, '\n').prepend(kToken.c_str()).append(kToken.c_str());
        QTest::newRow("a letter") << QByteArray("934750eb-68f0-448d-8930-34377bab5b3g");
        QTest::newRow("a zero byte") << QByteArray("934750eb-68f0-448d-8930-34377bab5b3\0", 36);
        QTest::newRow("not text") << QByteArray(36, '\xff');
        QTest::newRow("huge") << QByteArray(3 << 20, 'a');
    }

    void onlyTokensAreStoredAndSent()
    {
        QFETCH(QByteArray, text);
        QVERIFY(!IsRestoreToken(text.toStdString()));
        StoreToken(kScreen, text.toStdString());
        QCOMPARE(RecallToken(kScreen), std::string());
        StoreToken(kScreen, kToken);
        QFile file(File());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
        file.close();
        QCOMPARE(RecallToken(kScreen), std::string());
        StoreToken(kScreen, kToken);
        QCOMPARE(RecallToken(kScreen), kToken);
    }

    void whatIsInItsPlaceIsNoError_data()
    {
        QTest::addColumn<bool>("folder");
        QTest::addColumn<bool>("replaced");
        QTest::newRow("a folder") << true << false;
        QTest::newRow("a pipe") << false << true;
    }

    void whatIsInItsPlaceIsNoError()
    {
        QFETCH(bool, folder);
        QFETCH(bool, replaced);
        StoreToken(kScreen, kToken);
        const QString file = File();
        QVERIFY(QFile::remove(file));
        QVERIFY(folder ? QDir().mkdir(file) : mkfifo(qPrintable(file), 0600) == 0);
        QCOMPARE(RecallToken(kScreen), std::string());
        StoreToken(kScreen, kOther);
        QCOMPARE(RecallToken(kScreen), replaced ? kOther : std::string());
        StoreToken(kScreen, "");
        QCOMPARE(Entries().size(), folder ? 1 : 0);
    }

    void placeThatCannotBeWrittenIsNoError()
    {
        QFile blocking(m_folder->filePath("lumenfold-recorder"));
        QVERIFY(blocking.open(QIODevice::WriteOnly));
        StoreToken(kScreen, kToken);
        QCOMPARE(RecallToken(kScreen), std::string());
        qputenv("XDG_STATE_HOME", "/proc/self");
        StoreToken(kScreen, kToken);
        QCOMPARE(RecallToken(kScreen), std::string());
    }

    void placeIsInTheUsersFolder()
    {
        qputenv("XDG_STATE_HOME", "not/absolute");
        const QByteArray home = qgetenv("HOME");
        qputenv("HOME", m_folder->path().toUtf8());
        StoreToken(kScreen, kToken);
        qputenv("HOME", home);
        QVERIFY(QFileInfo(m_folder->filePath(".local/state/lumenfold-recorder")).isDir());
    }

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QStringList Entries() const
    {
        return QDir(m_folder->filePath("lumenfold-recorder"))
            .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    QString File() const { return m_folder->filePath("lumenfold-recorder/" + Entries().value(0)); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_APPLESS_MAIN(ToolRestoreTokenTest)
#include "tool_restore_token_test.moc"
