#pragma once

#include <QObject>

class QWidget;

// Ends the program when its window is closed, even while hidden, and only then. Qt's
// quitOnLastWindowClosed would end a recording when a message box closes while the window is
// hidden, and would not end the program when a hidden window is closed.
class CloseWatcher : public QObject
{
    Q_OBJECT

public:
    explicit CloseWatcher(QWidget& window);

    bool eventFilter(QObject* watched, QEvent* event) override;
};
