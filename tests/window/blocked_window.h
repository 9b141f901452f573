#pragma once

#include "ui/input_block.h"

#include <QEventLoop>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

// A window with two buttons and a field, which notes what is clicked.
class BlockedWindowTest : public QObject
{
    Q_OBJECT

protected:
    // Shows a window with two buttons and a field that has the focus.
    void Prepare()
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
