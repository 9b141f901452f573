#include "jobs/cut_command.h"

#include <QProcess>
#include <QTest>

class CutCommandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCommandLineHasTwoBlanksAroundTheTimesAndOneAtItsEnd()
    {
        QCOMPARE(CutCommand("\"/app/tool\"", "/v/a b.mp4", 10, 25, "/out/Cut_a b.mp4"),
                 QString("\"/app/tool\" -i \"/v/a b.mp4\"  -ss 10 -t 15 -codec copy  "
                         "\"/out/Cut_a b.mp4\" "));
    }

    void theToolGetsOneArgumentForEachPath()
    {
        QCOMPARE(QProcess::splitCommand(
                     CutCommand("\"/app/tool\"", "/v/a b.mp4", 10, 25, "/out/Cut_a b.mp4")),
                 QStringList({"/app/tool", "-i", "/v/a b.mp4", "-ss", "10", "-t", "15", "-codec",
                              "copy", "/out/Cut_a b.mp4"}));
    }

    void positionsAreNotChecked_data()
    {
        QTest::addColumn<qint64>("start");
        QTest::addColumn<qint64>("end");
        QTest::addColumn<QString>("times");
        QTest::newRow("equal") << qint64(7) << qint64(7) << "-ss 7 -t 0";
        QTest::newRow("end before start") << qint64(30) << qint64(20) << "-ss 30 -t -10";
        QTest::newRow("hours stay seconds") << qint64(3600) << qint64(7265) << "-ss 3600 -t 3665";
        QTest::newRow("beyond 32 bits")
            << qint64(5000000000) << qint64(5000000001) << "-ss 5000000000 -t 1";
    }

    void positionsAreNotChecked()
    {
        QFETCH(qint64, start);
        QFETCH(qint64, end);
        QFETCH(QString, times);
        const QString command = CutCommand("t", "/a", start, end, "/b");
        QVERIFY2(command.contains(times + " -codec"), qPrintable(command));
    }

    void theFileIsNamedAfterItsSource_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("destination");
        QTest::newRow("blank") << "/v/a b.mp4"
                               << "/out/Cut_a b.mp4";
        QTest::newRow("no extension") << "/v/clip"
                                      << "/out/Cut_clip";
        QTest::newRow("capitals") << "/v/w/CLIP.MP4"
                                  << "/out/Cut_CLIP.MP4";
        QTest::newRow("no directory") << "clip.mp4"
                                      << "/out/Cut_clip.mp4";
        QTest::newRow("no source at all") << QString() << "/out/Cut_";
        QTest::newRow("per cent") << "/v/%1.mp4"
                                  << "/out/Cut_%1.mp4";
    }

    void theFileIsNamedAfterItsSource()
    {
        QFETCH(QString, source);
        QTEST(CutDestination("/out", source), "destination");
    }
};

QTEST_GUILESS_MAIN(CutCommandTest)
#include "cut_command_test.moc"
