#pragma once

#include <QLabel>
#include <QPushButton>
#include <QString>
#include <QTest>

#include <functional>

// Widgets by what they read. Null if there is none.

template <class Widget>
Widget* FindWidget(const QWidget* root, const std::function<bool(const Widget&)>& matches)
{
    for (auto* widget : root->findChildren<Widget*>()) {
        if (matches(*widget)) {
            return widget;
        }
    }
    return nullptr;
}

inline QLabel* LabelReading(const QWidget* root, const QString& text)
{
    return FindWidget<QLabel>(root, [&](const QLabel& label) { return label.text() == text; });
}

inline QPushButton* ButtonReading(const QWidget* root, const QString& text)
{
    return FindWidget<QPushButton>(
        root, [&](const QPushButton& button) { return button.text() == text; });
}

/// By its accessible name.
inline QPushButton* ButtonNamed(const QWidget* root, const QString& name)
{
    return FindWidget<QPushButton>(
        root, [&](const QPushButton& button) { return button.accessibleName() == name; });
}

/// One that can be seen: each page has a "Back". Reports a failure if there is none.
inline QPushButton* VisibleButton(const QWidget* root, const QString& text)
{
    auto* found = FindWidget<QPushButton>(root, [&](const QPushButton& button) {
        return button.isVisible() && button.text() == text;
    });
    if (found == nullptr) {
        QTest::qFail(qPrintable("no button reads " + text), __FILE__, __LINE__);
    }
    return found;
}

/// Clicks the visible button that reads this.
inline void PressButton(const QWidget* root, const QString& text)
{
    if (auto* button = VisibleButton(root, text)) {
        QTest::mouseClick(button, Qt::LeftButton);
    }
}
