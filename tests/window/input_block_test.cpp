#include "ui/input_block.h"

#include <QApplication>
#include <QDialog>
#include <QEventLoop>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

// What a user does in a window while it takes no input, and right after it.
class InputBlockTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(400, 200);
        m_first = AddButton("first", 10);
        m_second = AddButton("second", 100);
        m_field = new QLineEdit(m_window.get());
        m_field->setGeometry(10, 100, 200, 30);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_field->setFocus();
        m_seen.clear();
    }
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

    QPushButton* AddButton(const QString& text, int left)
    {
        auto* button = new QPushButton(text, m_window.get());
        button->setGeometry(left, 10, 80, 30);
        connect(button, &QPushButton::clicked, this, [this, text] { m_seen << text; });
        return button;
    }

    // A block with an event loop, in which the user does two things one after the other.
    void Block(const std::function<void()>& act, const std::function<void()>& then = {},
               const QList<QAbstractButton*>& open = {},
               InputBlock::Input input = InputBlock::Input::Deferred)
    {
        const InputBlock block(*m_window, input, open);
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&] {
            act();
            if (then) {
                then();
            }
            loop.quit();
        });
        loop.exec();
    }

    QPoint Middle(const QWidget* widget) const
    {
        return widget->mapTo(m_window.get(), widget->rect().center());
    }
    // As from the window system: at once, before any event that waits in the event loop.
    void Send(QEvent::Type type, const QWidget* widget)
    {
        const QPoint place = Middle(widget);
        const bool isUp = type == QEvent::MouseButtonRelease;
        QMouseEvent event(type, place, m_window->mapToGlobal(place), Qt::LeftButton,
                          isUp ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window->windowHandle(), &event);
    }
    void Press(const QWidget* widget) { Send(QEvent::MouseButtonPress, widget); }
    void Release(const QWidget* widget) { Send(QEvent::MouseButtonRelease, widget); }
    void Click(const QWidget* widget)
    {
        Press(widget);
        Release(widget);
    }
    void SendKey(QEvent::Type type, bool isRepeated, const QString& text = "a")
    {
        QKeyEvent event(type, text[0].toUpper().unicode(), Qt::NoModifier, text, isRepeated);
        QCoreApplication::sendEvent(m_window->windowHandle(), &event);
    }
    void Type(const QString& text)
    {
        for (const QChar letter : text) {
            SendKey(QEvent::KeyPress, false, letter);
            SendKey(QEvent::KeyRelease, false, letter);
        }
    }

    std::unique_ptr<QWidget> m_window;
    QPushButton* m_first = nullptr;
    QPushButton* m_second = nullptr;
    QLineEdit* m_field = nullptr;
    QStringList m_seen;
};

QTEST_MAIN(InputBlockTest)
#include "input_block_test.moc"
