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

#include <functional>

// Identifies the directory chooser of a page: no caption, so Qt's own, and no start directory, so
// the working directory.
inline QString UsualChooser()
{
    return "Find Directory, a directory, directories only, from " + QDir::currentPath() +
           ", over Lumenfold Screen Recorder";
}

// Acts as a user who answers every modal dialog: message dialogs with a button, the directory
// chooser with a directory. Keeps the messages.
class ModalBoxes
{
public:
    ModalBoxes()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { Answer(); });
        m_timer.start(5);
    }

    QStringList texts;                         // of the message dialogs, in order
    QStringList titles;                        // of their windows
    QList<QRect> places;                       // their geometries
    QString button = "OK";                     // the button to press
    std::function<bool(const QString&)> leave; // whether to leave a message unanswered
    QString directory;                         // the directory to choose; null presses Cancel
    QString startDirectory;                    // of the last chooser
    QString chooserKind;                       // kind of the last chooser, from UsualChooser()
    int choosers = 0;                          // how many there were
    qint64 jobNsecs = 0;                       // from the chooser to the message

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
        auto* message = box->findChild<QLabel*>("m_pMessageLabel");
        if (leave && message != nullptr && leave(message->text())) {
            return;
        }
        jobNsecs = m_sinceChoice.nsecsElapsed();
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
        // On closing, Qt stores its settings and waits for the disk. That is not part of the job.
        QObject::connect(&chooser, &QObject::destroyed, &m_timer,
                         [this] { m_sinceChoice.start(); });
        if (directory.isNull()) {
            chooser.reject();
            return;
        }
        // In the field, names in quotes are a list of names.
        const bool isTyped = !directory.contains('"');
        chooser.findChild<QLineEdit*>("fileNameEdit")->setText(isTyped ? directory : QString());
        if (!isTyped) {
            chooser.setDirectory(directory);
        }
        QMetaObject::invokeMethod(&chooser, "accept");
    }

    QTimer m_timer;
    QElapsedTimer m_sinceChoice;
};
