#pragma once

#include "tests/window/job_tool.h"

#include <QAccessible>

// Controls by the name that a screen reader says.
class NamedControlsTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        MakeVideo("a.mp4", "00:00:30");
        MakeVideo("b.mp4", "00:00:40");
    }
    void cleanup() { FinishVideos(); }

protected:
    // A row of test data for each page, with the slot that enters it.
    static void AddPageRows()
    {
        QTest::addColumn<QString>("slot");
        QTest::newRow("home") << "";
        QTest::newRow("record") << "btnSlot";
        QTest::newRow("cut") << "btnMontageSlot";
        QTest::newRow("merge") << "btnEditSlot";
    }

    // Opens the window on the page of this slot; without one on the home page.
    void Enter(const QString& slot)
    {
        OpenWindow();
        Window().activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        if (!slot.isEmpty()) {
            Call(qPrintable(slot));
        }
    }

    QWidget* CurrentPage()
    {
        return Window().findChild<QStackedLayout*>("m_pStack")->currentWidget();
    }

    static bool IsControl(const QWidget* widget)
    {
        return (widget->focusPolicy() & Qt::TabFocus) != 0;
    }

    // What a screen reader says.
    static QString Name(const QWidget* widget)
    {
        QAccessibleInterface* told =
            QAccessible::queryAccessibleInterface(const_cast<QWidget*>(widget));
        return told == nullptr ? QString() : told->text(QAccessible::Name);
    }
};
