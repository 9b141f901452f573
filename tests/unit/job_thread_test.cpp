#include "jobs/job_thread.h"

#include <QSignalSpy>
#include <QTest>

namespace {
void Count(void* param, int& result)
{
    *static_cast<int*>(param) += 1 + result;
}
} // namespace

class JobThreadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAFunctionRunReturnsAtOnce()
    {
        CMyThread thread;
        thread.run();
        QVERIFY(!thread.isRunning());
    }

    void runCallsTheFunctionOnceWithItsArgumentAndAZeroResult()
    {
        CMyThread thread;
        int calls = 0;
        thread.SetFunc(Count, &calls);
        thread.run();
        QCOMPARE(calls, 1);
    }

    void aStartedThreadRunsTheFunctionAndReportsNoProgress()
    {
        CMyThread thread;
        QSignalSpy progress(&thread, SIGNAL(ProcessCallBack(int)));
        QVERIFY(progress.isValid());
        int calls = 0;
        thread.SetFunc(Count, &calls);
        thread.start();
        QVERIFY2(thread.wait(10000), "the thread did not end");
        QCOMPARE(calls, 1);
        QCOMPARE(progress.count(), 0);
    }
};

QTEST_GUILESS_MAIN(JobThreadTest)
#include "job_thread_test.moc"
