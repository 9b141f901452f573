#include "jobs/duration.h"

#include <QTest>

class DurationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theProbeNamesTheFileAndNoOutput()
    {
        QCOMPARE(ProbeCommand("\"/app/tool\"", "/v/a b.mp4"),
                 QString("\"/app/tool\" -i \"/v/a b.mp4\""));
    }

    void theDurationInTheToolsOutput_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("text");
        QTest::addColumn<qlonglong>("seconds");
        QTest::newRow("an ordinary video") << "Input #0\n  Duration: 01:02:03.99, start: 0"
                                           << "01:02:03" << 3723LL;
        QTest::newRow("under a second") << "Duration: 00:00:00.40"
                                        << "00:00:00" << 0LL;
        QTest::newRow("100 hours lose their last digit") << "Duration: 100:00:00.00"
                                                         << "100:00:0" << 360000LL;
        QTest::newRow("not available") << "Duration: N/A, start: 0.0"
                                       << "N/A, sta" << 0LL;
        QTest::newRow("the first of two") << "Duration: 00:00:07 Duration: 00:00:09"
                                          << "00:00:07" << 7LL;
        QTest::newRow("no marker") << "Invalid data found"
                                   << "" << 0LL;
        QTest::newRow("capitals count") << "duration: 00:00:07"
                                        << "" << 0LL;
        QTest::newRow("cut off") << "Duration: 00:0"
                                 << "00:0" << 0LL;
        QTest::newRow("nothing") << ""
                                 << "" << 0LL;
    }

    void theDurationInTheToolsOutput()
    {
        QFETCH(QString, output);
        const QString text = QString::fromStdString(FindDuration(output));
        QTEST(text, "text");
        QTEST(qlonglong(DurationSeconds(text)), "seconds");
    }

    void aFieldThatNoIntHoldsCountsNothing()
    {
        QCOMPARE(DurationSeconds("9223372036854775807:1:2"), 62LL);
        QCOMPARE(DurationSeconds("2147483647:0:0"), 2147483647LL * 3600);
        QCOMPARE(DurationSeconds("1:-9999999999:2147483648"), 3600LL);
    }
};

QTEST_GUILESS_MAIN(DurationTest)
#include "duration_test.moc"
