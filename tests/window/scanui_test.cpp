#include "tests/window/progress_dialog.h"

#include <QProgressBar>
#include <QWindow>

namespace {

// Counts the paint events of the watched objects.
class PaintCounter : public QObject
{
public:
    QHash<QObject*, int> counts;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        counts[watched] += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

class ScanuiTest : public ProgressDialogTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { Finish(); }

    void itStandsAQuarterInAndIsDrawnBeforeTheJob()
    {
        m_window->move(40, 20);
        m_dialog->ShowOver(*m_window);
        QCOMPARE(m_dialog->geometry(), QRect(40 + 250, 20 + 150, 500, 250));
        QVERIFY(m_dialog->windowHandle()->isExposed());
    }

    void aReportSetsBarAndText_data()
    {
        QTest::addColumn<QByteArray>("signal");
        QTest::addColumn<QString>("word");
        QTest::addColumn<int>("operation");
        QTest::newRow("cut") << QByteArray("CutProcessCallBack") << "Cut" << 2;
        QTest::newRow("merge") << QByteArray("AddProcessCallBack") << "Merger" << 1;
    }

    void aReportSetsBarAndText()
    {
        QFETCH(QByteArray, signal);
        QFETCH(QString, word);
        m_dialog->show();
        Emit(signal, 45, "/v/a b.mp4", "/o/x.mp4", 0);
        QCOMPARE(SCANUI::m_progressBar->value(), 45);
        QCOMPARE(m_dialog->findChild<QLabel*>("m_labelInfo")->text(),
                 "  Process: 45%\n  Current " + word + ": /v/a b.mp4\n  Destination: /o/x.mp4");
        QTEST(SCANUI::m_nOprType, "operation");
        QVERIFY(m_dialog->isVisible());
        QVERIFY(!SCANUI::m_bIsFinished);
    }

    // The job blocks the event loop: the bar is painted inside the report, the text later.
    void aReportPaintsTheBarAtOnceAndTheTextLater()
    {
        m_dialog->ShowOver(*m_window);
        PaintCounter paints;
        auto* label = m_dialog->findChild<QLabel*>("m_labelInfo");
        SCANUI::m_progressBar->installEventFilter(&paints);
        label->installEventFilter(&paints);
        Cut(45, 0);
        QVERIFY2(paints.counts.value(SCANUI::m_progressBar) > 0,
                 "the bar still shows the old value");
        QCOMPARE(paints.counts.value(label), 0);
        QTRY_VERIFY2(paints.counts.value(label) > 0, "the text is never painted");
    }

    void aReportOfAHundredTellsSuccessAndCloses()
    {
        m_dialog->show();
        Cut(100, 0);
        QCOMPARE(m_boxes->texts, QStringList{kCutGood});
        QVERIFY(!m_dialog->isVisible());
        QVERIFY(SCANUI::m_bIsFinished);
    }

    void theMessagesStandOneEighthIn()
    {
        m_dialog->setGeometry(100, 60, 500, 250);
        m_dialog->show();
        Merge(100, 0);
        QCOMPARE(m_boxes->texts, QStringList{kMergeGood});
        QCOMPARE(m_boxes->places, QList<QRect>{QRect(100 + 62, 60 + 31, 400, 150)});
    }

    void anErrorAfterAGoodJobTellsSuccessFirstAndFailureLast_data()
    {
        QTest::addColumn<QByteArray>("signal");
        QTest::addColumn<int>("error");
        QTest::addColumn<QStringList>("messages");
        QTest::newRow("cut, invalid")
            << QByteArray("CutProcessCallBack") << 1 << QStringList{kCutGood, kCutBad};
        QTest::newRow("cut, cancelled")
            << QByteArray("CutProcessCallBack") << 2 << QStringList{kCutGood, kCutBad};
        QTest::newRow("merge, cancelled")
            << QByteArray("AddProcessCallBack") << 2 << QStringList{kMergeGood, kMergeBad};
    }

    void anErrorAfterAGoodJobTellsSuccessFirstAndFailureLast()
    {
        QFETCH(QByteArray, signal);
        QFETCH(int, error);
        m_dialog->show();
        Emit(signal, 100, "/v/a.mp4", signal.startsWith("Cut") ? "/o/Cut_a.mp4" : "/o/M.mp4",
             error);
        QTEST(m_boxes->texts, "messages");
        QCOMPARE(SCANUI::m_nError, error);
        QVERIFY(!m_dialog->isVisible());
    }

    void theErrorOfTheJobBeforeDecidesWhatTheCloseShows()
    {
        SCANUI::m_nError = 1;
        m_dialog->show();
        Cut(100, 0);
        QCOMPARE(m_boxes->texts, QStringList{kCutBad});
        QCOMPARE(SCANUI::m_nError, 0);
    }

    void twoFailedJobsInARowTellFailureTwice()
    {
        SCANUI::m_nError = 1;
        m_dialog->show();
        Cut(100, 1);
        QCOMPARE(m_boxes->texts, QStringList({kCutBad, kCutBad}));
    }

    void theFirstProgressOfANewJobClearsAnOldError()
    {
        SCANUI::m_nError = 1;
        m_dialog->show();
        Cut(5, 0);
        QCOMPARE(SCANUI::m_nError, 0);
        Cut(100, 0);
        QCOMPARE(m_boxes->texts, QStringList{kCutGood});
    }

    void anErrorInTheMiddleTellsFailureAndCloses()
    {
        m_dialog->show();
        Merge(40, 1);
        QCOMPARE(m_boxes->texts, QStringList{kMergeBad});
        QVERIFY(!m_dialog->isVisible());
    }

    void everyFurtherReportOfAHundredTellsSuccessAgain()
    {
        m_dialog->show();
        for (int i = 0; i < 3; ++i) {
            Merge(100, 0);
        }
        QCOMPARE(m_boxes->texts, QStringList({kMergeGood, kMergeGood, kMergeGood}));
    }

    void aNewDialogHasNotFinishedButKeepsErrorAndOperation()
    {
        m_dialog->show();
        Merge(100, 2);
        Build();
        QVERIFY(!SCANUI::m_bIsFinished);
        QCOMPARE(SCANUI::m_nError, 2);
        QCOMPARE(SCANUI::m_nOprType, 1);
        QCOMPARE(SCANUI::m_progressBar->value(), 0);
    }

    void longPathsAreShownWhole()
    {
        m_dialog->show();
        const QString path = "/home/somebody/Videos/Recordings of the winter term/Part " +
                             QString("%1 and ").arg(1).repeated(3) + "the rest.mp4";
        Emit("AddProcessCallBack", 100 - 1, path, path, 0);
        auto* label = m_dialog->findChild<QLabel*>("m_labelInfo");
        QVERIFY2(label->heightForWidth(label->width()) <= label->height(),
                 qPrintable(QString("%1 of %2 pixels are seen")
                                .arg(label->height())
                                .arg(label->heightForWidth(label->width()))));
        QVERIFY(m_dialog->rect().contains(label->geometry()));
    }

    void aFileNameIsNoMarkup()
    {
        m_dialog->show();
        Emit("CutProcessCallBack", 5, "/v/<b>a</b>.mp4", "/o/<i>.mp4", 0);
        QCOMPARE(m_dialog->findChild<QLabel*>("m_labelInfo")->textFormat(), Qt::PlainText);
    }

    void theJobEntriesClearTheCancelRequestAndDoNothingElse()
    {
        for (auto* entry : {&DRUI::_CutProcess, &DRUI::_AddProcess}) {
            DRUI::m_bisFinished = true;
            int result = 7;
            entry(m_window.get(), result);
            QVERIFY(!DRUI::m_bisFinished);
            QCOMPARE(result, 7);
        }
        int progress = 3;
        QCOMPARE(m_window->MakeAddVedio(nullptr, progress), 0);
        QCOMPARE(progress, 3);
        HRESULT told = 7;
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "CutVedio", Q_RETURN_ARG(HRESULT, told),
                                          Q_ARG(WCHAR*, nullptr), Q_ARG(int&, progress)));
        QCOMPARE(told, 0);
        QCOMPARE(progress, 3);
    }
};

QTEST_MAIN(ScanuiTest)
#include "scanui_test.moc"
