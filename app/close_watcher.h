#pragma once

#include <QObject>

class QWidget;

// Ends the program when its window is closed, hidden as it may be, and at no other time: Qt's own
// rule, the end with the last visible window, would end a recording with the first message box
// closed while the window is hidden, and would not end the program when a hidden window is closed.
class CloseWatcher : public QObject
{
    Q_OBJECT

public:
    explicit CloseWatcher(QWidget& window);

    bool eventFilter(QObject* watched, QEvent* event) override;
};
