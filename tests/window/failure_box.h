#pragma once

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
