#include "tests/window/failure_box.h"
#include "tests/window/modal_boxes.h"

#include <QAction>
#include <QDialog>
#include <QMenu>
#include <QProcess>
#include <QSystemTrayIcon>

// The box that tells a failure, beside other windows.
class FailureBoxTest : public FailureTest
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowAndTheTrayGoOnBesideTheBox()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Child<QProcess>("m_pRecProcess")->kill();
        QTRY_VERIFY(FailureBox() != nullptr);
        QVERIFY2(QApplication::activeModalWidget() == nullptr, "the box blocks other windows");
        Child<QSystemTrayIcon>("m_pTrayIcon")->contextMenu()->actions().at(1)->trigger();
        QVERIFY(!DRUI::m_bIsStart && Window().isVisible());
        QVERIFY(FailureBox() != nullptr); // it may not have been read yet

        Press("Start");
        QCOMPARE(ToldFailure(), QString()); // it was about the recording before
        QTRY_COMPARE(Recordings().size(), 2);
        Call("btnSlotRecord");
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        QCOMPARE(ToldFailure(), QString());
    }

    void theBoxTakesInputWhileAnotherDialogIsOpen()
    {
        EnterRecordPage();
        QFile::remove(BesideProgram("tool"));
        QDialog other;
        other.setModal(true);
        other.show();
        Call("btnSlotRecord");
        QVERIFY(FailureBox() != nullptr);
        QCOMPARE(QApplication::activeModalWidget(), FailureBox());
    }

    void aHostileReasonIsPlainTextAndFits()
    {
        const QByteArray hostile = "<b>" + QByteArray(500, 'W') + "</b> <img src=x> error\x1b[0m";
        InstallTool("#!/bin/bash\necho 'tool: " + hostile + "' >&2; exit 1\n");
        EnterRecordPage();
        Press("Record");
        QTRY_VERIFY(FailureBox() != nullptr);
        auto* label = FailureBox()->findChild<QLabel*>("m_pMessageLabel");
        QCOMPARE(label->textFormat(), Qt::PlainText);
        QVERIFY2(label->text().contains("<b>W"), qPrintable(label->text()));
        QCOMPARE(label->text().remove('\n').remove(' '), ToldFailure().remove(' '));
        const QSize needed = label->fontMetrics().size(0, label->text());
        QVERIFY2(needed.width() <= label->width() && needed.height() <= label->height(),
                 qPrintable(QString("%1 by %2 in %3 by %4")
                                .arg(needed.width())
                                .arg(needed.height())
                                .arg(label->width())
                                .arg(label->height())));
        QVERIFY2(FailureBox()->rect().contains(
                     QRect(label->mapTo(FailureBox(), QPoint()), label->size())),
                 "the text sticks out of the box");
        QVERIFY(FailureBox()->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    }

    void theBoxIsOnTheScreenWhereverTheWindowWas()
    {
        EnterRecordPage();
        QFile::remove(BesideProgram("tool"));
        Window().move(5000, 5000);
        Press("Record");
        QVERIFY(FailureBox() != nullptr);
        QVERIFY(Window().screen()->availableGeometry().contains(FailureBox()->geometry()));
    }
};

QTEST_MAIN(FailureBoxTest)
#include "failure_box_test.moc"
