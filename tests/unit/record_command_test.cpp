#include "jobs/record_command.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QString kFixed =
    " -ar 44100 -r 29.97 -preset ultrafast -max_muxing_queue_size 9999 -async 1 -pix_fmt yuv420p ";
} // namespace

class RecordCommandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCommandLine_data()
    {
        QTest::addColumn<int>("audio");
        QTest::addColumn<QString>("inputs");
        QTest::newRow("None: the screen alone") << -2 << " -f avfoundation -framerate 30 -i \"1\"";
        QTest::newRow("one device by its index")
            << 2 << " -f avfoundation -framerate 30 -i \"1:2\"";
        QTest::newRow("the device 0") << 0 << " -f avfoundation -framerate 30 -i \"1:0\"";
        QTest::newRow("both: the second input names the screen again")
            << -1 << " -f avfoundation -framerate 30 -i \"1:0\" -f avfoundation -i \"1:2\"";
    }

    void theCommandLine()
    {
        QFETCH(int, audio);
        QFETCH(QString, inputs);
        const QString command = RecordCommand("\"/app/tool\"", {'1', 0, 2}, audio, "/s/a b.mp4");
        QCOMPARE(command, "\"/app/tool\"" + inputs + kFixed + "\"/s/a b.mp4\" ");
    }

    void theFileIsNamedByTheTimeOfTheStart()
    {
        const QDateTime time(QDate(2018, 5, 1), QTime(14, 3, 27));
        QCOMPARE(FileStamp(time), QString("2018-05-01 14-03-27"));
        QCOMPARE(RecordPath("/home/me/ScreenSave", time),
                 QString("/home/me/ScreenSave/2018-05-01 14-03-27.mp4"));
    }

    void afternoonHoursCountOn()
    {
        QCOMPARE(FileStamp(QDateTime(QDate(2026, 1, 2), QTime(0, 4, 5))),
                 QString("2026-01-02 00-04-05"));
        QCOMPARE(FileStamp(QDateTime(QDate(2026, 1, 2), QTime(23, 4, 5))),
                 QString("2026-01-02 23-04-05"));
    }

    void aFreePathIsKeptAndATakenOneNumbered()
    {
        const QTemporaryDir directory;
        const QString path = directory.filePath(QString::fromUtf8("Aufnahme \u00e4.mp4"));
        QCOMPARE(FreePath(path), path);
        for (const char* next : {"Aufnahme \u00e4 (1).mp4", "Aufnahme \u00e4 (2).mp4"}) {
            QFile taken(FreePath(path));
            QVERIFY(taken.open(QIODevice::WriteOnly | QIODevice::NewOnly));
            QCOMPARE(FreePath(path), directory.filePath(QString::fromUtf8(next)));
        }
    }

    // ffmpeg would write to where the link leads.
    void aLinkThatLeadsNowhereIsTaken()
    {
        const QTemporaryDir directory;
        QVERIFY(QFile::link(directory.filePath("nowhere"), directory.filePath("a.mp4")));
        QCOMPARE(FreePath(directory.filePath("a.mp4")), directory.filePath("a (1).mp4"));
    }

    void aFreePathIsFreeAsTheCommandNamesIt()
    {
        const QTemporaryDir directory;
        QCOMPARE(FreePath(directory.filePath("a\"b\".mp4")), directory.filePath("ab.mp4"));
        QFile taken(directory.filePath("ab.mp4"));
        QVERIFY(taken.open(QIODevice::WriteOnly | QIODevice::NewOnly));
        QCOMPARE(FreePath(directory.filePath("a\"b\".mp4")), directory.filePath("ab (1).mp4"));
    }

    void aTakenPathThatIsTooLongGivesNoPathAtAll()
    {
        QTemporaryDir directory;
        QString deep = directory.path();
        while (deep.size() < 500) {
            deep += '/' + QString(100, 'd');
        }
        QVERIFY(QDir().mkpath(deep));
        QFile taken(deep + '/' + QString(30, 'f') + ".mp4");
        QVERIFY(taken.open(QIODevice::WriteOnly));
        QCOMPARE(FreePath(taken.fileName()), QString());
    }
};

QTEST_GUILESS_MAIN(RecordCommandTest)
#include "record_command_test.moc"
