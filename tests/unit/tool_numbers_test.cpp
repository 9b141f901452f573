// Numbers in texts of other programs: ffmpeg's reports, the recorder's arguments.
#include "tool/system/numbers.h"

#include <QTest>

class ToolNumbersTest : public QObject
{
    Q_OBJECT

private slots:
    void decimalIsTaken_data();
    void decimalIsTaken();
    void noDecimalLeavesTheText_data();
    void noDecimalLeavesTheText();
};

void ToolNumbersTest::decimalIsTaken_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("rest");
    QTest::newRow("whole") << QByteArray("30") << 30.0 << QByteArray();
    QTest::newRow("with a fraction") << QByteArray("29.97 fps") << 29.97 << QByteArray(" fps");
    QTest::newRow("negative") << QByteArray("-90.00 degrees") << -90.0 << QByteArray(" degrees");
    QTest::newRow("leading zeros") << QByteArray("00:01") << 0.0 << QByteArray(":01");
    QTest::newRow("point at its end") << QByteArray("25.") << 25.0 << QByteArray();
    QTest::newRow("two points") << QByteArray("1.2.3") << 1.2 << QByteArray(".3");
    QTest::newRow("exponent is no part of it") << QByteArray("1e9") << 1.0 << QByteArray("e9");
    QTest::newRow("endless fraction")
        << QByteArray("0." + QByteArray(5000, '3')) << 0.33333333333333 << QByteArray();
    QTest::newRow("fifteen digits")
        << QByteArray("999999999999999") << 999999999999999.0 << QByteArray();
}

void ToolNumbersTest::decimalIsTaken()
{
    QFETCH(QByteArray, text);
    std::string_view left(text.constData(), static_cast<size_t>(text.size()));
    const std::optional<double> value = tool::TakeDecimal(left);
    QVERIFY2(value, "no number was found");
    QTEST(*value, "value");
    QTEST(QByteArray(left.data(), static_cast<qsizetype>(left.size())), "rest");
}

void ToolNumbersTest::noDecimalLeavesTheText_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char* text : {"", "-", ".", ".5", " 1", "+1", "--1", "inf", "-inf", "nan", "N/A",
                             "1000000000000000", "\xff\x31"}) {
        QTest::newRow(text) << QByteArray(text);
    }
}

void ToolNumbersTest::noDecimalLeavesTheText()
{
    QFETCH(QByteArray, text);
    const std::string_view whole(text.constData(), static_cast<size_t>(text.size()));
    std::string_view left = whole;
    QVERIFY(!tool::TakeDecimal(left));
    QVERIFY2(left == whole, "the text has been shortened");
}

QTEST_APPLESS_MAIN(ToolNumbersTest)
#include "tool_numbers_test.moc"
