#pragma once

#include <QElapsedTimer>
#include <QObject>

#include <memory>

class CMessageBox;
class QWidget;

// Tells that a recording has failed, while the main window is hidden: a message box above other
// windows and a notification, by the tray icon where there is one. Nothing waits for the box.
class FailureNotice : public QObject
{
    Q_OBJECT

public:
    /// `window` owns the tray icons and gives the box its place. `standIn` is visible while a
    /// recording has no tray.
    FailureNotice(QWidget& window, const QWidget& standIn);
    ~FailureNotice() override;

    /// Shows the message instead of one that is still open.
    Q_SLOT void Tell(const QString& message);

    void Close();

    // Drops keys of somebody who is typing when the box appears: some desktops give it the
    // keyboard. Notices that the window is shown.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Q_SLOT void FollowWindow();
    void ShowBox(const QString& message);
    void ShowAboveWindow();
    void Notify(QString message) const;

    QWidget& m_window;
    const QWidget& m_standIn;
    std::unique_ptr<CMessageBox> m_pBox;
    QElapsedTimer m_sinceKey; // or since the box appeared
    bool m_bDropsKey = true;  // the one that was pressed last
};
