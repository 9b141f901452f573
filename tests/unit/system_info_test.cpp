#include "util/system_info.h"

#include <QTest>

class SystemInfoTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // So a second recorder can run beside the first.
    void theseDoNothingHereAndSayZero()
    {
        unsigned long long bytes = 5;
        wchar_t name = L'x';
        QCOMPARE(bIsRemovableMedia(L"/"), 0);
        QCOMPARE(GetDriverFreeSpace(L"/", bytes), 0);
        QCOMPARE(GetDriverFileSystem(L"/", &name, 1), 0);
        QCOMPARE(GetDiskBytes(L"/", bytes), 0);
        QCOMPARE(CloseProcess(L"lumenfold-recorder"), 0);
        QCOMPARE(CheckHasAnotherAppInstance(L"lumenfold-recorder"), 0);
        QCOMPARE(bytes, 5ULL);
        QVERIFY(name == L'x');
    }
};

QTEST_APPLESS_MAIN(SystemInfoTest)
#include "system_info_test.moc"
