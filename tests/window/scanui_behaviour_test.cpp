#include "tests/window/progress_dialog.h"
#include "ui/path_label.h"

// What the progress dialog does besides showing the outcome of a normal job.
class ProgressDialogBehaviourTest : public ProgressDialogTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_first = QString("operation %1, finished %2, error %3, cancelled %4")
                      .arg(SCANUI::m_nOprType)
                      .arg(SCANUI::m_bIsFinished)
                      .arg(SCANUI::m_nError)
                      .arg(DRUI::m_bisFinished);
    }
    void init() { Prepare(); }
    void cleanup() { Finish(); }

    void aProgramBeginsWithoutAJob()
    {
        QCOMPARE(m_first, QString("operation 0, finished 0, error 0, cancelled 0"));
    }

    // Everything that is not a merge counts as a cut.
    void beforeAnyReportTheDialogSpeaksOfACut()
    {
        QCOMPARE(SCANUI::m_nOprType, 0);
        m_boxes->button = "NO";
        m_dialog->show();
        PressButton("Cancel");
        SCANUI::m_nError = 1;
        PressButton("Cancel");
        QCOMPARE(m_boxes->texts, QStringList({"Are you sure to cancel the video cut?", kCutBad}));
        QVERIFY(!m_dialog->isVisible());
    }

    // A stored error takes precedence over the question and over the success of a finished job.
    void aCloseByTheUserTellsAStoredErrorAndCancelsNothing()
    {
        SCANUI::m_nError = 2;
        SCANUI::m_nOprType = 1;
        m_dialog->show();
        PressButton("Cancel");
        QCOMPARE(m_boxes->texts, QStringList{kMergeBad});
        QVERIFY(!m_dialog->isVisible());
        QVERIFY(!DRUI::m_bisFinished);
        QCOMPARE(SCANUI::m_nError, 2);
    }

    // A name with non-Latin-1 characters, as shown in the progress text.
    void thePathsGoThroughLatin1InTheProgressButNotInTheOutcome()
    {
        m_dialog->show();
        const QString path = QString::fromUtf8("/o/\u00e4\u5f55.mp4");
        Emit("CutProcessCallBack", 5, path, path, 0);
        const QString shown = QString::fromUtf8("/o/\u00e4?.mp4");
        QCOMPARE(m_dialog->findChild<QLabel*>("m_labelInfo")->text(),
                 "  Process: 5%\n  Current Cut: " + shown + "\n  Destination: " + shown);
        Emit("CutProcessCallBack", 100, path, path, 0);
        QCOMPARE(m_boxes->texts, QStringList{"Cut success, file path is " + path + ' '});
    }

    void aLongPathIsPaintedWithItsFileName_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("whole");
        const QString name = "/Merge_2026-11-22 08-19-07.mp4";
        QTest::newRow("short") << "/home" << name << true;
        QTest::newRow("deep folder") << QString("/folder").repeated(40) << name << true;
        QTest::newRow("long name") << "/home" << '/' + QString(240, 'n') + ".mp4" << false;
    }

    void aLongPathIsPaintedWithItsFileName()
    {
        QFETCH(QString, folder);
        QFETCH(QString, name);
        m_dialog->show();
        auto* label = m_dialog->findChild<QLabel*>("m_labelInfo");
        Emit("AddProcessCallBack", 5, folder + name, folder + name, 0);
        const QString text = label->text();
        QCOMPARE(text.section('\n', 2), "  Destination: " + folder + name);
        const QImage painted = label->grab().toImage();

        QStringList lines = text.split('\n');
        for (QString& line : lines) {
            line = ElidedLine(line, label->fontMetrics(), label->width());
            QVERIFY2(label->fontMetrics().horizontalAdvance(line) <= label->width(),
                     qPrintable(line));
        }
        QVERIFY2(lines[2].startsWith("  Destination: /"), qPrintable(lines[2]));
        QVERIFY2(lines[2].endsWith(".mp4"), qPrintable(lines[2]));
        QTEST(lines[2].endsWith(name), "whole");
        label->setWordWrap(false);
        label->setText(lines.join('\n'));
        QCOMPARE(label->grab().toImage(), painted);
    }

    // Qt sends no close event to a hidden dialog. The one sent by hand must not be nested.
    void aReportWhileTheOutcomeIsToldTellsNothingMore_data()
    {
        QTest::addColumn<bool>("shown");
        QTest::newRow("shown") << true;
        QTest::newRow("hidden by Escape") << false;
    }

    void aReportWhileTheOutcomeIsToldTellsNothingMore()
    {
        QFETCH(bool, shown);
        m_boxes.reset(); // it answers too soon
        QStringList texts;
        QWidget* told = nullptr;
        QTimer user;
        connect(&user, &QTimer::timeout, this, [&] {
            QWidget* box = QApplication::activeModalWidget();
            if (box == nullptr) {
                return;
            }
            if (box == told) {
                box->close();
                return;
            }
            told = box;
            texts << box->findChild<QLabel*>("m_pMessageLabel")->text();
            if (texts.size() == 1) {
                QTimer::singleShot(0, this, [this] { Cut(100, 0); });
            }
        });
        user.start(5);
        m_dialog->setVisible(shown);
        Cut(100, 0);
        QCOMPARE(texts, QStringList{kCutGood});
    }

    // Cancelled by a screen reader, which needs no mouse. A hidden dialog is never drawn.
    void theJobDoesNotWaitForADialogThatWasHidden()
    {
        const QWidget window;
        QTimer::singleShot(0, m_dialog.get(), &QWidget::hide);
        QElapsedTimer time;
        time.start();
        m_dialog->ShowOver(window);
        QVERIFY(!m_dialog->isVisible());
        QVERIFY2(time.elapsed() < 900, qPrintable(QString("waited %1 ms").arg(time.elapsed())));
    }

private:
    QString m_first; // at program start
};

QTEST_MAIN(ProgressDialogBehaviourTest)
#include "scanui_behaviour_test.moc"
