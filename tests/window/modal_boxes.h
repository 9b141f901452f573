#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

// The directory chooser that a page opens: without a caption, which leaves it Qt's own, and without
// a place to start from, which leaves it the working directory.
inline QString UsualChooser()
{
    return "Find Directory, a directory, directories only, from " + QDir::currentPath() +
           ", over Lumenfold Screen Recorder";
}

// A user who answers whatever modal dialog comes up: message dialogs with one of their buttons, the
// directory chooser with a directory. Keeps what the messages said.
class ModalBoxes
{
public:
    ModalBoxes()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { Answer(); });
        m_timer.start(5);
    }

    QStringList texts;      // of the message dialogs, in their order
    QStringList titles;     // of their windows
    QList<QRect> places;    // where they stood
    QString button = "OK";  // what answers them
    QString directory;      // what answers the chooser; null presses its Cancel
    QString startDirectory; // where the last chooser began
    QString chooserKind;    // what the last one was, as UsualChooser() tells it
    int choosers = 0;       // how many there were
    qint64 jobNsecs = 0;    // from the chooser's end to the message

private:
    void Answer()
    {
        QWidget* box = QApplication::activeModalWidget();
        if (box == nullptr || !box->isVisible()) {
            return;
        }
        if (auto* chooser = qobject_cast<QFileDialog*>(box)) {
            ++choosers;
            startDirectory = chooser->directory().absolutePath();
            chooserKind = Describe(*chooser);
            Choose(*chooser);
            return;
        }
        jobNsecs = m_sinceChoice.nsecsElapsed();
        auto* message = box->findChild<QLabel*>("m_pMessageLabel");
        auto* standard = qobject_cast<QMessageBox*>(box);
        texts << (message != nullptr    ? message->text()
                  : standard != nullptr ? standard->text()
                                        : "no message");
        titles << box->windowTitle();
        places << box->geometry();
        for (auto* candidate : box->findChildren<QPushButton*>()) {
            if (candidate->text() == button) {
                QTest::mouseClick(candidate, Qt::LeftButton);
                return;
            }
        }
        box->close();
    }

    static QString Describe(const QFileDialog& chooser)
    {
        const QWidget* parent = chooser.parentWidget();
        return QString("%1, %2, %3, from %4, over %5")
            .arg(chooser.windowTitle(),
                 chooser.fileMode() == QFileDialog::Directory ? "a directory" : "a file",
                 chooser.testOption(QFileDialog::ShowDirsOnly) ? "directories only" : "all files",
                 chooser.directory().absolutePath(),
                 parent == nullptr ? "nothing" : parent->windowTitle());
    }

    void Choose(QFileDialog& chooser)
    {
        // Closing it, Qt stores its settings on the disk and waits for that: no part of the job.
        QObject::connect(&chooser, &QObject::destroyed, &m_timer,
                         [this] { m_sinceChoice.start(); });
        if (directory.isNull()) {
            chooser.reject();
            return;
        }
        chooser.findChild<QLineEdit*>("fileNameEdit")->setText(directory);
        QMetaObject::invokeMethod(&chooser, "accept");
    }

    QTimer m_timer;
    QElapsedTimer m_sinceChoice;
};
