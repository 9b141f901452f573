#pragma once

#include "tests/window/fake_tool.h"

#include <QApplication>
#include <QWidget>

// The open box that tells of a failed recording, or null.
inline QWidget* FailureBox()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == "m_pFailureBox" && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

// Its message without the line breaks that make it fit, or an empty text.
inline QString ToldFailure()
{
    return FailureBox() == nullptr ? QString() : FailureBox()->accessibleName();
}

// A test of recordings that fail.
class FailureTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup()
    {
        WriteFile(BesideProgram("may_finish"), QByteArray());
        CloseWindow();
        QVERIFY2(FailureBox() == nullptr, "the box outlives the window");
    }
};
