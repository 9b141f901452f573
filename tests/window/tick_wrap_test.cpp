// The status of a recording while the 32-bit millisecond count wraps, every 49.7 days. Replaces the
// system's clock.
#include "tests/window/fake_tool.h"

#include <ctime>
#include <sys/times.h>

namespace {
clock_t g_clock = 0; // 100 per second
}

extern "C" {
clock_t __wrap_times(struct tms* unused); // NOLINT: the linker's name
clock_t __wrap_times(struct tms* unused)  // NOLINT
{
    *unused = {};
    return g_clock;
}
}

class TickWrapTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup()
    {
        if (DRUI::m_bIsStart) {
            Call("btnSlotMenuStop");
        }
        CloseWindow();
    }

    void theStatusShowsTheTimeSinceTheStart_data()
    {
        QTest::addColumn<qint64>("start"); // ms
        QTest::addColumn<qint64>("elapsed");
        QTest::addColumn<QString>("shown");
        constexpr qint64 lap = 1LL << 32;
        QTest::newRow("the count begins anew after half a second")
            << lap - 506 << 2000LL << "00:00:02";
        QTest::newRow("it begins anew in the last step") << lap - 2006 << 2010LL << "00:00:02";
        QTest::newRow("long before and long after") << lap - 3600006 << 10800000LL << "03:00:00";
        QTest::newRow("in the second lap") << lap + 1004 << 61000LL << "00:01:01";
        QTest::newRow("into the third") << 2 * lap - 4002 << 59990LL << "00:00:59";
        QTest::newRow("half a lap, where a sign would show")
            << 1000LL << lap / 2 + 352 << "596:31:24";
    }

    void theStatusShowsTheTimeSinceTheStart()
    {
        QFETCH(qint64, start);
        QFETCH(qint64, elapsed);
        QFETCH(QString, shown);
        QCOMPARE(start % 10, 0);
        g_clock = start / 10;
        EnterRecordPage();
        Press("Record");
        QTRY_VERIFY(DRUI::m_pStereoMix->text().startsWith("Recording... \n\n00:00:00\n\n"));
        g_clock = (start + elapsed) / 10;
        QTRY_COMPARE(DRUI::m_pStereoMix->text().section('\n', 2, 2), shown);
    }
};

QTEST_MAIN(TickWrapTest)
#include "tick_wrap_test.moc"
