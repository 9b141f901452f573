#include "util/tick.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QTest>

#include <limits>
#include <optional>
#include <sys/time.h>
#include <sys/times.h>

#ifdef WRAPS_SYSTEM_CALLS
namespace {
bool g_clockIsBroken = false;
std::optional<clock_t> g_ticks; // replaces the system's count
} // namespace

extern "C" {
clock_t __real_times(struct tms* unused); // NOLINT: the linker's names
clock_t __wrap_times(struct tms* unused); // NOLINT
clock_t __wrap_times(struct tms* unused)  // NOLINT
{
    return g_ticks ? *g_ticks : __real_times(unused);
}

int __real_gettimeofday(struct timeval* now, void* zone); // NOLINT: the linker's names
int __wrap_gettimeofday(struct timeval* now, void* zone); // NOLINT
int __wrap_gettimeofday(struct timeval* now, void* zone)  // NOLINT
{
    if (g_clockIsBroken) {
        now->tv_sec = std::numeric_limits<time_t>::max();
        return 0;
    }
    return __real_gettimeofday(now, zone);
}
}
#endif

class TickTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ticksAreMilliseconds()
    {
        // The time between the two readings is longer than `inner` and shorter than `outer` says,
        // however late the process is scheduled.
        QElapsedTimer outer;
        QElapsedTimer inner;
        outer.start();
        const long long start = rsb_getTickCount();
        inner.start();
        QTRY_VERIFY(inner.elapsed() >= 300);
        const qint64 least = inner.elapsed();
        const long long counted = rsb_getTickCount() - start;
        const qint64 most = outer.elapsed() + 1;
        // A tick may have just started or ended at either end, and so may one of the clock the
        // ticks are derived from.
        QVERIFY2(
            counted > least - 20 && counted < most + 20,
            qPrintable(QString("%1 ms counted in %2 to %3").arg(counted).arg(least).arg(most)));
        QCOMPARE(rsb_getTickCount() % 10, 0);
    }

    void theCountGoesOnBeyond32Bits()
    {
#ifdef WRAPS_SYSTEM_CALLS
        g_ticks = 429496729; // the last one whose milliseconds fit into 32 bits
        const long long before = rsb_getTickCount();
        g_ticks = *g_ticks + 1;
        const long long after = rsb_getTickCount();
        g_ticks.reset();
        QCOMPARE(before, 4294967290LL);
        QCOMPARE(after, 4294967300LL);
#else
        QSKIP("no wrapped system call here");
#endif
    }

    void localTime()
    {
        SYSTEMTIME time = {};
        const QDateTime before = QDateTime::currentDateTime();
        QCOMPARE(rsb_getLocalTime(&time), 0);
        const QDateTime after = QDateTime::currentDateTime();
        const QDateTime told(QDate(time.wYear, time.wMonth, time.wDay),
                             QTime(time.wHour, time.wMinute, time.wSecond, time.wMilliseconds));
        QVERIFY2(before <= told && told <= after, qPrintable(told.toString(Qt::ISODateWithMs)));
        QCOMPARE(int(time.wDayOfWeek), told.date().dayOfWeek() % 7);
    }

    void theDayOfTheMonthStandsBeforeTheDayOfTheWeek()
    {
        static_assert(sizeof(SYSTEMTIME) == 16);
        QVERIFY(offsetof(SYSTEMTIME, wDay) == 4 && offsetof(SYSTEMTIME, wDayOfWeek) == 6);
    }

    void aTimeBeyondTheCalendarIsAFailure()
    {
#ifdef WRAPS_SYSTEM_CALLS
        SYSTEMTIME time = {};
        g_clockIsBroken = true;
        const int result = rsb_getLocalTime(&time);
        g_clockIsBroken = false;
        QCOMPARE(result, 34);
        QCOMPARE(int(time.wYear), 0);
#else
        QSKIP("no wrapped system call here");
#endif
    }
};

QTEST_APPLESS_MAIN(TickTest)
#include "tick_test.moc"
