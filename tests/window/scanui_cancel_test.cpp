#include "tests/window/progress_dialog.h"

#include <QProgressBar>

// How the user leaves the progress dialog.
class ScanuiCancelTest : public ProgressDialogTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { Finish(); }

    void cancelAndTheCloseButtonAsk_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("Cancel") << "Cancel";
        QTest::newRow("close button") << QString();
    }

    void cancelAndTheCloseButtonAsk()
    {
        QFETCH(QString, button);
        m_boxes->button = "NO";
        m_dialog->setGeometry(100, 60, 500, 250);
        m_dialog->show();
        Cut(5, 0);
        PressButton(button);
        QCOMPARE(m_boxes->texts, QStringList{"Are you sure to cancel the video cut?"});
        QCOMPARE(m_boxes->places, QList<QRect>{QRect(162, 91, 400, 150)});
        QVERIFY(m_dialog->isVisible());
        QVERIFY(!DRUI::m_bisFinished);
        QCOMPARE(SCANUI::m_progressBar->value(), 5);
    }

    void cancellingAMergeAsksWithTheDoubledThe()
    {
        m_boxes->button = "NO";
        m_dialog->show();
        Merge(5, 0);
        PressButton("Cancel");
        QCOMPARE(m_boxes->texts, QStringList{"Are you sure to cancel the the video merge?"});
    }

    void beforeTheFirstReportTheQuestionIsThatOfTheJobBefore()
    {
        m_boxes->button = "NO";
        SCANUI::m_nOprType = 1;
        m_dialog->show();
        PressButton("Cancel");
        QCOMPARE(m_boxes->texts, QStringList{"Are you sure to cancel the the video merge?"});
    }

    void yesAsksTheJobToStopAndClosesWithoutAMessage()
    {
        m_dialog->show();
        Cut(50, 0);
        PressButton("Cancel");
        QVERIFY(DRUI::m_bisFinished);
        QCOMPARE(SCANUI::m_progressBar->value(), 0);
        QVERIFY(!m_dialog->isVisible());
        QCOMPARE(m_boxes->texts.size(), 1);
    }

    void theQuestionCanBeAskedAgain()
    {
        m_boxes->button = "NO";
        m_dialog->show();
        PressButton("Cancel");
        PressButton("Cancel");
        m_boxes->button = "OK";
        PressButton("Cancel");
        QCOMPARE(m_boxes->texts.size(), 3);
        QVERIFY(DRUI::m_bisFinished);
        QVERIFY(!m_dialog->isVisible());
    }

    void aJobThatEndsWhileTheQuestionIsOpenTellsSuccess()
    {
        m_boxes.reset(); // leaves the question unanswered
        QStringList texts;
        QTimer user;
        connect(&user, &QTimer::timeout, this, [&] {
            QWidget* box = QApplication::activeModalWidget();
            if (box == nullptr) {
                return;
            }
            texts << box->findChild<QLabel*>("m_pMessageLabel")->text();
            if (texts.size() == 1) {
                Cut(100, 0);
            } else {
                box->close();
            }
        });
        user.start(5);
        m_dialog->show();
        PressButton("Cancel");
        QCOMPARE(texts, QStringList({"Are you sure to cancel the video cut?", kCutGood}));
        QVERIFY(!m_dialog->isVisible());
        QVERIFY(!DRUI::m_bisFinished);
    }

    void escapeHidesItWithoutAQuestionAndTheOutcomeIsStillTold()
    {
        m_dialog->show();
        QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
        QVERIFY(!m_dialog->isVisible());
        QCOMPARE(m_boxes->texts, QStringList());
        Cut(100, 0);
        QCOMPARE(m_boxes->texts, QStringList{kCutGood});
    }
};

QTEST_MAIN(ScanuiCancelTest)
#include "scanui_cancel_test.moc"
