#include "tests/window/blocked_window.h"

#include <QPushButton>
#include <QTest>

#include <functional>

// What a user does in a window while it takes no input, and right after it.
class InputBlockTest : public BlockedWindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { m_window.reset(); }
    void aReleaseAfterTheBlockDoesNotOvertakeItsPress()
    {
        Block([this] { Press(m_first); });
        Release(m_first);
        QTRY_COMPARE(m_seen, QStringList{"first"});
    }

    void clicksDuringAndAfterTheBlockKeepTheirOrder()
    {
        Block([this] {
            Click(m_first);
            Click(m_second);
        });
        Click(m_first);
        Click(m_second);
        QTRY_COMPARE(m_seen, QStringList({"first", "second", "first", "second"}));
    }

    void keysDuringAndAfterTheBlockKeepTheirOrder()
    {
        Block([this] { Type("ab"); });
        Type("cd");
        QTRY_COMPARE(m_field->text(), QString("abcd"));
    }

    void aClickBetweenKeysDecidesWhereTheyGo()
    {
        Block([this] {
            Type("a");
            Press(m_first);
        });
        Release(m_first);
        Type("b");
        QTRY_COMPARE(m_seen, QStringList{"first"});
        QVERIFY2(m_first->hasFocus(), "the click did not move the focus");
        QCOMPARE(m_field->text(), QString("a"));
    }

    void aDoubleClickSelectsAWord()
    {
        m_field->setText("wonderful");
        int releases = 0;
        const Watch watch(*m_field, [&](const QEvent& event) {
            releases += event.type() == QEvent::MouseButtonRelease ? 1 : 0;
        });
        Block([this] {
            QTest::mouseDClick(m_window->windowHandle(), Qt::LeftButton, {},
                               m_field->geometry().topLeft() + QPoint(20, 15));
        });
        QTRY_COMPARE(m_field->selectedText(), QString("wonderful"));
        QTRY_COMPARE(releases, 2);
    }

    void theWheelWaitsBehindAClick()
    {
        QWidget wheeled(m_window.get());
        wheeled.setGeometry(300, 0, 100, 100);
        wheeled.show();
        const Watch watch(wheeled, [this](const QEvent& event) {
            if (event.type() == QEvent::Wheel) {
                m_seen << "wheel";
            }
        });
        Block([this] { Click(m_first); });
        const QPoint place = Middle(&wheeled);
        QWheelEvent turn(place, m_window->mapToGlobal(place), {}, {0, 120}, Qt::NoButton,
                         Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m_window->windowHandle(), &turn);
        QTRY_COMPARE(m_seen, QStringList({"first", "wheel"}));
    }

    void aBlockThatBeginsInAClickHoldsTheRestBack()
    {
        int blocks = 0;
        connect(m_first, &QPushButton::clicked, this, [&] {
            if (++blocks == 1) {
                Block([this] { Click(m_first); }, [this] { Press(m_second); });
                QVERIFY2(!m_seen.contains("second"), "clicked during a block");
            }
        });
        Block([this] {
            Click(m_first);
            Click(m_second);
        });
        QTRY_COMPARE(m_seen, QStringList({"first", "second", "first"}));
        Release(m_second);
        QTRY_COMPARE(m_seen, QStringList({"first", "second", "first", "second"}));
    }

    void theInnerOfTwoBlocksDeliversNothing()
    {
        Block([this] {
            Block([this] { Click(m_first); });
            QCoreApplication::processEvents();
            QCOMPARE(m_seen, QStringList());
            Click(m_second);
        });
        QTRY_COMPARE(m_seen, QStringList({"first", "second"}));
    }

private:
    // Calls `seen` with each event of a widget.
    class Watch : public QObject
    {
    public:
        Watch(QWidget& widget, std::function<void(const QEvent&)> seen) : m_seen(std::move(seen))
        {
            widget.installEventFilter(this);
        }
        bool eventFilter(QObject* /*receiver*/, QEvent* event) override
        {
            m_seen(*event);
            return false;
        }

    private:
        std::function<void(const QEvent&)> m_seen;
    };
};

QTEST_MAIN(InputBlockTest)
#include "input_block_test.moc"
