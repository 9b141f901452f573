#pragma once

#include <QElapsedTimer>
#include <QObject>

#include <memory>

class CMessageBox;
class QWidget;

// Tells that a recording has failed, while the main window is hidden: a message box above other
// windows and a notification by the tray icon. Nothing waits for the box.
class FailureNotice : public QObject
{
    Q_OBJECT

public:
    /// `window` owns the tray icons and gives the box its place.
    explicit FailureNotice(QWidget& window);
    ~FailureNotice() override;

    /// Shows the message instead of one that is still open.
    Q_SLOT void Tell(const QString& message);

    void Close();

    // Drops keys of somebody who is typing when the box appears: some desktops give it the
    // keyboard.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ShowBox(const QString& message);
    void Notify(QString message) const;

    QWidget& m_window;
    std::unique_ptr<CMessageBox> m_pBox;
    QElapsedTimer m_sinceKey; // or since the box appeared
    bool m_bDropsKey = true;  // the one that was pressed last
};
