#include "util/search_key.h"

#include <QTest>

#include <array>

class SearchKeyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theNineLettersWithAMeaning()
    {
        QString found;
        for (wchar_t c = 1; c < 0x3000; ++c) {
            if (IsBoostSearchKeyLetter(c)) {
                found += QChar(static_cast<char16_t>(c));
            }
        }
        QCOMPARE(found, QString("$+.?[]^{}"));
        QVERIFY2(!IsBoostSearchKeyLetter(L'\0'), "the end of a text is no letter");
    }

    void theyAreEscapedAndTheRestStays()
    {
        QVERIFY(ReplaceSearchKey(L"a*(b).mp4?") == L"a*(b)\\.mp4\\?");
        QVERIFY(ReplaceSearchKey(L"").empty());
    }

    void aDiskRecordBeginsWithItsSignature()
    {
        const std::array<unsigned char, 6> record{'F', 'I', 'L', 'E', '0', 0};
        QVERIFY(IsNtfsFileRecord(record.data(), 6));
        QVERIFY(IsNtfsFileRecord(record.data(), 4));
        QVERIFY(!IsNtfsFileRecord(record.data(), 3));
        QVERIFY(!IsNtfsFileRecord(record.data() + 1, 5));
        QVERIFY(!IsNtfsFileRecord(nullptr, 100));
    }
};

QTEST_APPLESS_MAIN(SearchKeyTest)
#include "search_key_test.moc"
