#include "util/format.h"

#include <QTest>

#include <array>
#include <limits>

class FormatTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeString_data()
    {
        QTest::addColumn<long long>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << 0LL << "00:00:00";
        QTest::newRow("59 s") << 59LL << "00:00:59";
        QTest::newRow("a minute") << 60LL << "00:01:00";
        QTest::newRow("a second short of an hour") << 3599LL << "00:59:59";
        QTest::newRow("an hour") << 3600LL << "01:00:00";
        QTest::newRow("a day and a bit") << 90061LL << "25:01:01";
        QTest::newRow("100 hours take three digits") << 360000LL << "100:00:00";
        QTest::newRow("a negative count stands as it is") << -5LL << "00:00:-5";
        QTest::newRow("below minus an hour too") << -3601LL << "00:00:-3601";
        QTest::newRow("the largest")
            << std::numeric_limits<long long>::max() << "2562047788015215:30:07";
        QTest::newRow("the smallest")
            << std::numeric_limits<long long>::min() << "00:00:-9223372036854775808";
    }

    void timeString()
    {
        QFETCH(long long, seconds);
        QFETCH(QString, text);
        QCOMPARE(QString::fromStdString(GetTimeStringA(seconds)), text);
        QCOMPARE(QString::fromStdWString(GetTimeString(seconds)), text);
    }

    void fileSize_data()
    {
        QTest::addColumn<long long>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << 0LL << "0 Bytes";
        QTest::newRow("the last in Bytes") << 1023LL << "1023 Bytes";
        QTest::newRow("1 KB") << 1024LL << "1.00 KB";
        QTest::newRow("1.5 KB") << 1536LL << "1.50 KB";
        QTest::newRow("the last in KB is rounded up") << 1048575LL << "1024.00 KB";
        QTest::newRow("1 MB") << 1048576LL << "1.00 MB";
        QTest::newRow("the last in MB is rounded up") << 1073741823LL << "1024.00 MB";
        QTest::newRow("1 GB") << 1073741824LL << "1.00 GB";
        QTest::newRow("1 TB") << (1LL << 40) << "1.00 TB";
        QTest::newRow("the largest") << std::numeric_limits<long long>::max() << "8388608.00 TB";
        QTest::newRow("negative") << -1LL << "-1 Bytes";
        QTest::newRow("negative in 32 bits") << -(1LL << 32) - 7 << "-7 Bytes";
        QTest::newRow("the smallest in 32 bits")
            << std::numeric_limits<long long>::min() << "0 Bytes";
    }

    void fileSize()
    {
        QFETCH(long long, bytes);
        QFETCH(QString, text);
        QCOMPARE(QString::fromStdString(GetFileSizeString(bytes)), text);
    }

    void wideFormatWritesAtMost4096Characters()
    {
        std::array<wchar_t, 4097> buffer{};
        QCOMPARE(rsb_wsprintf(buffer.data(), L"%d-%ls", 7, L"\u00e4"), 3);
        QCOMPARE(QString::fromWCharArray(buffer.data()), QString("7-\u00e4"));
        buffer[4096] = L'!';
        QCOMPARE(rsb_wsprintf(buffer.data(), L"%4095d", 1), 4095);
        QVERIFY2(rsb_wsprintf(buffer.data(), L"%4096d", 1) < 0,
                 "4096 characters and an end fit nowhere");
        QVERIFY2(buffer[4096] == L'!', "the character after the limit was written to");
    }
};

QTEST_APPLESS_MAIN(FormatTest)
#include "format_test.moc"
