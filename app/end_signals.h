#pragma once

#include <QObject>
#include <QSocketNotifier>

class QWidget;

// Closes a window at SIGTERM, SIGINT and SIGHUP, as its close button does: a recording is finished,
// and a job leaves nothing behind. A signal that is ignored stays ignored.
class EndSignals : public QObject
{
    Q_OBJECT

public:
    /// At most one at a time. The signals stay caught afterwards, so that they do not interrupt the
    /// window's destruction. Without descriptors for a pipe they end the program as usual.
    explicit EndSignals(QWidget& window);

private Q_SLOTS:
    void Close();

private:
    QWidget& m_window;
    QSocketNotifier m_notifier{QSocketNotifier::Read};
};
