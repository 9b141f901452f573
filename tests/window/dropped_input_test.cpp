#include "tests/window/blocked_window.h"

#include <QDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>

// Input of a blocked window that reaches nothing afterwards.
class DroppedInputTest : public BlockedWindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { m_window.reset(); }

    void nothingReachesAButtonThatIsGone()
    {
        Block([this] {
            Click(m_first);
            QTest::mouseClick(m_second, Qt::LeftButton); // sent to the widget itself
            delete m_second;
        });
        Click(m_first);
        QTRY_COMPARE(m_seen, QStringList({"first", "first"}));
    }

    void nothingReachesAWindowThatWasClosed()
    {
        Block([this] {
            Click(m_first);
            m_window->close();
        });
        QCoreApplication::processEvents();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        Click(m_second);
        QTRY_COMPARE(m_seen, QStringList{"second"});
    }

    void aWindowMayBeDeletedBeforeTheDelivery()
    {
        Block([this] { Click(m_first); });
        m_window.reset();
        QCoreApplication::processEvents();
        QCOMPARE(m_seen, QStringList());
    }

    // As if it had come after the dialog had opened: a dialog takes all input of its window.
    void nothingReachesAWindowBehindADialog()
    {
        QDialog dialog;
        connect(m_first, &QPushButton::clicked, this, [&] {
            QTimer::singleShot(50, &dialog, &QDialog::accept);
            dialog.exec();
        });
        Block([this] {
            Click(m_first);
            Click(m_second);
        });
        QTRY_COMPARE(dialog.result(), int(QDialog::Accepted));
        QTRY_VERIFY(!dialog.isVisible());
        QCoreApplication::processEvents();
        QCOMPARE(m_seen, QStringList{"first"});
    }

    // Whoever holds a key down cannot see what the repetitions do, nor stop them.
    void aHeldKeyIsNotRepeatedAfterwards()
    {
        Block([this] {
            Type("a");
            for (int i = 0; i < 5; ++i) {
                SendKey(QEvent::KeyPress, true);
            }
        });
        Type("b");
        QTRY_COMPARE(m_field->text(), QString("ab"));
    }

    // They were meant for the page that is left.
    void aClickOnAnOpenButtonForgetsWhatWasKept()
    {
        Block(
            [this] {
                Click(m_second);
                Click(m_first);
                QCOMPARE(m_seen, QStringList{"first"});
            },
            {}, {m_first});
        QCoreApplication::processEvents();
        QCOMPARE(m_seen, QStringList{"first"});
    }

    void droppedInputStaysDropped()
    {
        Block([this] { Press(m_first); }, [this] { Type("a"); }, {}, InputBlock::Input::Dropped);
        Release(m_first);
        Type("b");
        Click(m_second);
        QTRY_COMPARE(m_seen, QStringList{"second"});
        QCOMPARE(m_field->text(), QString("b"));
    }
};

QTEST_MAIN(DroppedInputTest)
#include "dropped_input_test.moc"
