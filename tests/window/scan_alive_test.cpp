#include "tests/window/job_in_program.h"

// The window while a folder's files are probed, one after the other.
class ScanAliveTest : public JobInProgramTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareJobs();
        InstallTool(QByteArray(kVideoTool)
                        .replace("if [[ $# -eq 2 ]]; then",
                                 "if [[ $# -eq 2 ]]; then [[ -e $here/go ]] || sleep 0.02"));
    }
    void cleanup() { FinishJobs(); }

    void theWindowLivesWhileRowsAppear_data() { Pages(); }
    void theWindowLivesWhileRowsAppear()
    {
        OpenOnPage();
        MakeVideos(20);
        auto* table = Child<QTableWidget>(Table());
        QList<int> seen;
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&] { seen << table->rowCount(); });
        look.start(5);
        Leave(Field());
        QCOMPARE(table->rowCount(), 20);
        QVERIFY2(seen.contains(5) && seen.contains(15), "the event loop did not run in between");
    }

    void aThousandFilesAreAllListed()
    {
        Go(); // no delay
        OpenWindow();
        MakeVideos(1000);
        InstallTool("#!/bin/sh\necho 'Duration: 00:00:09.00'\n");
        int events = 0;
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&] { ++events; });
        look.start(5);
        Call("btnEditSlot");
        QCOMPARE(Names("m_pSourceVideoTable").size(), 1000);
        QVERIFY2(events > 20, qPrintable(QString("%1 events").arg(events)));
        QCOMPARE(Page(), 3);
    }

    void backLeavesThePageAndEndsTheScan_data() { Pages(); }
    void backLeavesThePageAndEndsTheScan()
    {
        OpenOnPage();
        MakeVideos(50);
        auto* table = Child<QTableWidget>(Table());
        When([table] { return table->rowCount() == 3; },
             [this] {
                 QTest::mouseClick(Window().windowHandle(), Qt::LeftButton, {}, MiddleOf("Back"));
             });
        Leave(Field());
        QCOMPARE(Page(), 0);
        QVERIFY2(table->rowCount() < 10, qPrintable(QString::number(table->rowCount())));
        ShowPage(); // and all of it the next time
        QCOMPARE(table->rowCount(), 50);
    }

    // Such as one of a file on a dead network share.
    void backLeavesAProbeThatHangs_data() { Pages(); }
    void backLeavesAProbeThatHangs()
    {
        MakeVideos(2);
        OpenOnPage();
        HangTheTool();
        When(IsToolAtWork, [this] { ClickBack(); });
        ExpectHomePageAtOnce([this] { Leave(Field()); });
        InstallTool(kVideoTool);
        ShowPage();
        QCOMPARE(Child<QTableWidget>(Table())->rowCount(), 2);
    }

    void backLeavesASelectedVideoThatCannotBeProbed()
    {
        MakeVideos(1);
        EnterCutPage();
        HangTheTool();
        When(IsToolAtWork, [this] { ClickBack(); });
        ExpectHomePageAtOnce([this] { ClickRow("m_pCutVideoTable", 0); });
        QVERIFY2(!Child<QPushButton>("m_pBtnCut")->isEnabled(), "it can be cut");
    }

    // The press moves the focus, which starts the scan; the release comes during it.
    void aPressOnBackThatStartsTheScanLeavesThePageAfterIt_data() { Pages(); }
    void aPressOnBackThatStartsTheScanLeavesThePageAfterIt()
    {
        OpenOnPage();
        MakeVideos(5);
        auto* table = Child<QTableWidget>(Table());
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        Child<QLineEdit>(Field())->setFocus();
        When([table] { return table->rowCount() == 3; },
             [this] {
                 QTest::mouseRelease(Window().windowHandle(), Qt::LeftButton, {}, MiddleOf("Back"));
             });
        QTest::mousePress(Window().windowHandle(), Qt::LeftButton, {}, MiddleOf("Back"));
        QCOMPARE(table->rowCount(), 5);
        QTRY_COMPARE(Page(), 0);
    }

    void theEntryDoesNotShowAPageThatWasLeft_data() { Pages(); }
    void theEntryDoesNotShowAPageThatWasLeft()
    {
        MakeVideos(50);
        OpenWindow();
        auto* table = Child<QTableWidget>(Table());
        When([table] { return table->rowCount() == 3; }, [this] { Call("btnSlotBack"); });
        ShowPage();
        QCOMPARE(Page(), 0);
    }

    void otherClicksWaitForTheEnd_data() { Pages(); }
    void otherClicksWaitForTheEnd()
    {
        OpenOnPage();
        MakeVideos(10);
        auto* table = Child<QTableWidget>(Table());
        auto* help = FindWidget<QPushButton>(&Window(), [](const QPushButton& button) {
            return button.isVisible() && button.toolTip() == "Help";
        });
        int rows = -1;
        connect(help, &QPushButton::pressed, this,
                [&] { rows = rows < 0 ? table->rowCount() : rows; });
        help->disconnect(&Window());
        When([table] { return table->rowCount() == 3; },
             [this, help] {
                 QTest::mouseClick(Window().windowHandle(), Qt::LeftButton, {},
                                   help->mapTo(&Window(), help->rect().center()));
             });
        Leave(Field());
        QTRY_COMPARE(rows, 10);
    }

    void closingTheWindowEndsTheScan_data() { Pages(); }
    void closingTheWindowEndsTheScan()
    {
        OpenOnPage();
        MakeVideos(100);
        auto* table = Child<QTableWidget>(Table());
        QElapsedTimer sinceClose;
        When([table] { return table->rowCount() == 3; },
             [&] {
                 sinceClose.start();
                 Window().close();
             });
        QCOMPARE(RunProgram([this] { Leave(Field()); }), 0);
        QVERIFY2(sinceClose.elapsed() < 1000, qPrintable(QString::number(sinceClose.elapsed())));
        QVERIFY2(table->rowCount() < 10, qPrintable(QString::number(table->rowCount())));
    }

    // A field that is left, a row that is clicked: each would use the process that probes.
    void nothingElseIsProbedMeanwhile()
    {
        MakeVideos(10);
        EnterMergePage();
        Calls();
        auto* table = Child<QTableWidget>("m_pSourceVideoTable");
        When([table] { return table->rowCount() == 3; },
             [this] {
                 Call("btnMontageSlot");
                 Leave("m_pLayout3DirEdit");
                 QVERIFY(QMetaObject::invokeMethod(&Window(), "CutTableItemClick",
                                                   Q_ARG(QTableWidgetItem*, nullptr)));
             });
        Leave("m_pLayout4DirEdit");
        QCOMPARE(Calls().size(), 10);
        QCOMPARE(table->item(9, 2)->text(), QString("00:00:30"));
    }

    void theCloseIsHeardWhileASelectedVideoIsProbed()
    {
        MakeVideos(1);
        EnterCutPage();
        HangTheTool();
        When(IsToolAtWork, [this] { Window().close(); });
        QElapsedTimer time;
        time.start();
        QCOMPARE(RunProgram([this] { ClickRow("m_pCutVideoTable", 0); }), 0);
        QVERIFY2(time.elapsed() < 5000, qPrintable(QString::number(time.elapsed())));
    }

private:
    static void Pages()
    {
        QTest::addColumn<bool>("merge");
        QTest::newRow("cut page") << false;
        QTest::newRow("merge page") << true;
    }
    static bool IsMerge()
    {
        QFETCH(bool, merge);
        return merge;
    }
    static const char* Field() { return IsMerge() ? "m_pLayout4DirEdit" : "m_pLayout3DirEdit"; }
    static const char* Table() { return IsMerge() ? "m_pSourceVideoTable" : "m_pCutVideoTable"; }

    void OpenOnPage()
    {
        OpenWindow();
        ShowPage();
    }
    void ShowPage() { Call(IsMerge() ? "btnEditSlot" : "btnMontageSlot"); }

    void ClickBack()
    {
        QTest::mouseClick(Window().windowHandle(), Qt::LeftButton, {}, MiddleOf("Back"));
    }

    // After something that waits.
    void ExpectHomePageAtOnce(const std::function<void()>& wait)
    {
        QElapsedTimer time;
        time.start();
        wait();
        QCOMPARE(Page(), 0);
        QVERIFY2(time.elapsed() < 2000, qPrintable(QString("after %1 ms").arg(time.elapsed())));
    }

    void MakeVideos(int count)
    {
        for (int i = 0; i < count; ++i) {
            MakeVideo(QString("%1.mp4").arg(i));
        }
    }
};

QTEST_MAIN(ScanAliveTest)
#include "scan_alive_test.moc"
