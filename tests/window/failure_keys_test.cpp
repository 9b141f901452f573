#include "tests/window/failure_box.h"
#include "tests/window/fake_tool.h"

#include <QElapsedTimer>
#include <QWindow>

// The box that tells of a failed recording may appear under the fingers of somebody who types.
class FailureKeysTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Prepare();
        EnterRecordPage();
        QFile::remove(BesideProgram("tool"));
        Press("Record");
        QVERIFY2(FailureBox() != nullptr, "nothing is told");
        m_pause.start();
        m_pBox = FailureBox()->windowHandle();
    }

    void cleanup() { CloseWindow(); }

    void aKeyAnswersTheBoxOnceNobodyHasTypedForAWhile_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("Space") << Qt::Key_Space;
        QTest::newRow("Return") << Qt::Key_Return;
        QTest::newRow("Escape") << Qt::Key_Escape;
    }

    void aKeyAnswersTheBoxOnceNobodyHasTypedForAWhile()
    {
        QFETCH(Qt::Key, key);
        QTest::keyClick(m_pBox, key);
        QVERIFY2(FailureBox() != nullptr, "a key of somebody who is typing answers the box");
        AwaitPause();
        QTest::keyClick(m_pBox, key);
        QVERIFY2(FailureBox() == nullptr, "the key does not answer the box");
    }

    // Its press was meant for another program.
    void aKeyThatIsHeldWhenTheBoxAppearsDoesNotAnswerIt()
    {
        AwaitPause();
        QTest::keyRelease(m_pBox, Qt::Key_Space);
        QTest::keyClick(m_pBox, Qt::Key_Space);
        QVERIFY2(FailureBox() != nullptr, "the end of a held key answers the box");
    }

private:
    // As long as the box needs, and some more.
    void AwaitPause()
    {
        m_pause.start();
        QTRY_VERIFY(m_pause.hasExpired(2000));
    }

    QElapsedTimer m_pause;
    QWindow* m_pBox = nullptr;
};

QTEST_MAIN(FailureKeysTest)
#include "failure_keys_test.moc"
