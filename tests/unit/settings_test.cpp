#include "jobs/settings.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

class SettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_directory = std::make_unique<QTemporaryDir>();
        m_path = m_directory->filePath("ScreenRecord.ini");
    }

    void withoutAFileTheDefaultIsInTheHomeDirectoryAndNoFileIsMade()
    {
        QCOMPARE(ReadSavePath(m_path), Default());
        QVERIFY2(!QFile::exists(m_path), "reading made a settings file");
    }

    void aWrittenDirectoryIsReadBack_data()
    {
        QTest::addColumn<QString>("directory");
        QTest::newRow("plain") << "/home/me/Videos";
        QTest::newRow("blanks and quotes") << "/home/me/my \"best\" 'takes'";
        QTest::newRow("commas and semicolons") << "/home/me/a, b; c=d";
        QTest::newRow("percent and backslash") << "/home/me/100%\\n";
        QTest::newRow("other letters")
            << QString::fromUtf8("/home/me/\u5f55\u5c4f/\u00e4\U0001F3A5");
    }

    void aWrittenDirectoryIsReadBack()
    {
        QFETCH(QString, directory);
        WriteSavePath(m_path, directory);
        QCOMPARE(ReadSavePath(m_path), directory);
    }

    void theKeyStandsInItsGroup()
    {
        WriteSavePath(m_path, "/home/me/Videos");
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("[screen_record]\nsave_path=/home/me/Videos\n"));
    }

    // Root's settings would be settings that the user's own program cannot change.
    void asRootTheFileIsGivenToTheOwnerOfItsFolder()
    {
        if (geteuid() != 0) {
            QSKIP("needs root");
        }
        QCOMPARE(chown(qPrintable(m_directory->path()), 65534, 65534), 0);
        WriteSavePath(m_path, "/home/me/Videos");
        QCOMPARE(QFileInfo(m_path).ownerId(), 65534U);
        QCOMPARE(ReadSavePath(m_path), QString("/home/me/Videos"));
    }

    void aFileOfTheQt4ProgramIsReadRight()
    {
        Write("[screen_record]\nsave_path=/Users/me/\\x5f55\\x5c4f/\\xe4 x\n");
        QCOMPARE(ReadSavePath(m_path), QString::fromUtf8("/Users/me/\u5f55\u5c4f/\u00e4 x"));
    }

    void garbageGivesTheDefault_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("binary") << QByteArray("\x00\xff\xfe[=]\n\x01", 8);
        QTest::newRow("another group") << QByteArray("[other]\nsave_path=/x\n");
        QTest::newRow("a megabyte of nothing") << QByteArray(1 << 20, 'x');
    }

    void garbageGivesTheDefault()
    {
        QFETCH(QByteArray, content);
        Write(content);
        QCOMPARE(ReadSavePath(m_path), Default());
    }

    void aDirectoryInPlaceOfTheFileGivesTheDefaultAndStays()
    {
        QVERIFY(QDir().mkdir(m_path));
        QCOMPARE(ReadSavePath(m_path), Default());
        WriteSavePath(m_path, "/x");
        QVERIFY(QFileInfo(m_path).isDir());
    }

private:
    static QString Default() { return QDir::homePath() + "/ScreenSave"; }

    void Write(const QByteArray& content)
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_path;
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "settings_test.moc"
